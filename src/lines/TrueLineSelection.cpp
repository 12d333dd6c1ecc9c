// SPDX-License-Identifier: MIT
#include "lines/TrueLineSelection.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"
#include "image/Ratio.h"
#include "image/Rect.h"
#include "lines/LineTournament.h"

namespace tavrix::lines {
namespace {

constexpr std::uint32_t kMeasureMask = 0xF0;  // of the grouping value
constexpr std::uint32_t kMeasureFromLeft = 0x20;
constexpr int kLargePart =
    6;  // the part of the page's height, rounded down, above which a component is large
constexpr Ratio kFlat{10, 15};  // widths that a flat component is high at most
constexpr int kMaxSlope = 3;    // tenths of a row a column, exclusive, between pieces of one line

// The mean height of the components that are large for the picture and not flat, else of all.
int TypicalHeight(const ComponentStore& store, int pageHeight) {
    std::uint64_t largeSum = 0;
    std::uint64_t largeCount = 0;
    std::uint64_t sum = 0;
    std::uint64_t count = 0;
    store::ForEachComponent(store, [&](const ComponentNode* node) {
        const int height = store::HeightOf(*node);
        sum += height;
        ++count;
        if (height <= pageHeight / kLargePart || height <= kFlat * store::WidthOf(*node)) return;
        largeSum += height;
        ++largeCount;
    });
    if (largeCount != 0) return static_cast<int>(largeSum / largeCount);
    return count != 0 ? static_cast<int>(sum / count) : 0;
}

// The union of all lines; one empty row and column at 0 without lines.
Rect TextArea(const ComponentStore& store) {
    std::optional<Rect> area;
    store::ForEachLine(
        store, [&](const ComponentNode* line) { area = area ? Union(*area, RectOf(*line)) : RectOf(*line); });
    return area.value_or(Rect{});
}

// Joins each line of a block with its successor while the two stand side by side.
void JoinPieces(ComponentStore& store, ComponentNode* block) {
    for (ComponentNode* line = block->firstChild; line != nullptr && line->next != nullptr;) {
        ComponentNode* const next = line->next;
        const int gap = std::max(next->left - line->right, line->left - next->right);
        const int offset = std::abs(store::CentreY(*line) - store::CentreY(*next));
        if (gap <= 0 || 10 * offset / gap >= kMaxSlope) {
            line = next;
            continue;
        }
        store::ForEachChild(*next,
                            [&](ComponentNode* component) { store::MoveToParent(next, component, line); });
        store::DeleteLine(store, next);
    }
}

// The row of a line's outermost component on the side that is measured from; none for an empty line.
std::optional<int> ReferenceRow(const ComponentNode& line, bool fromLeft) {
    const ComponentNode* outermost = line.firstChild;
    store::ForEachChild(line, [&](const ComponentNode* node) {
        if (fromLeft ? node->left < outermost->left : node->right > outermost->right) outermost = node;
    });
    if (outermost == nullptr) return std::nullopt;
    return store::CentreY(*outermost);
}

}  // namespace

void SelectTrueLine(ComponentStore& store, const ImageFrame& page, std::uint32_t selectFlags,
                    std::uint32_t groupingValue) {
    const bool joinsPieces = (selectFlags & TAVRIX_SELECT_JOIN_PIECES) != 0;
    const int typicalHeight = TypicalHeight(store, page.height);
    const Rect textArea = TextArea(store);
    if (joinsPieces) store::ForEachBlock(store, [&](ComponentNode* block) { JoinPieces(store, block); });
    if (store.firstBlock != nullptr) store::SortChildrenByLeft(store.firstBlock);
    if ((selectFlags & TAVRIX_SELECT_ALL_LINES) != 0) return;

    const int base = joinsPieces ? textArea.y0 : 0;
    const int midRow = (joinsPieces ? textArea.y1 - textArea.y0 + 1 : page.height) / 2;
    const bool fromLeft = (groupingValue & kMeasureMask) == kMeasureFromLeft;
    const LineTournament tournament(page, typicalHeight, midRow);
    std::optional<Contender> best;
    store::ForEachLine(store, [&](ComponentNode* line) {
        if (store::HeightOf(*line) < typicalHeight / 2) {
            store::DeleteLine(store, line);
            return;
        }
        const std::optional<int> row = ReferenceRow(*line, fromLeft);
        if (!row) return;
        const Contender candidate{line, store::WidthOf(*line), *row - base, LineProfile(*line, page.height)};
        if (best && !tournament.Beats(candidate, *best)) {
            store::DeleteLine(store, line);
            return;
        }
        if (best) store::DeleteLine(store, best->line);
        best = candidate;
    });
    ComponentNode* const first = store::FirstLine(store);
    if (best && first != nullptr) {
        first->pixelCount = static_cast<std::uint32_t>(best->profile.components);
        first->lineHeight = static_cast<std::uint32_t>(best->profile.CharacterHeight());
    }
}

}  // namespace tavrix::lines
