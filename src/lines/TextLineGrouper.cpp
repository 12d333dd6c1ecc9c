// SPDX-License-Identifier: MIT
#include "lines/TextLineGrouper.h"

#include "components/ComponentNoiseFilter.h"
#include "components/ComponentStore.h"
#include "lines/HeightHistogram.h"
#include "lines/LineNodes.h"

namespace tavrix {
namespace {

constexpr int kHeightRoom = 500;               // rows
constexpr std::uint32_t kTallestLeftOut = 10;  // components that may be taller than the text
constexpr int kMinLineSide = 10;               // pixels
constexpr std::uint32_t kNoSplitFlags = 0x40 | 0x80;

}  // namespace

TextLineGrouper::TextLineGrouper(DibImage* source, const GroupingOptions* groupingOptions,
                                 std::uint32_t groupingValue)
    : ComponentGrouper(source), options(groupingOptions), extra(groupingValue) {}

bool TextLineGrouper::Run(ComponentStore& store) {
    if (options == nullptr) return false;
    selectFlags = options->selectFlags;
    splitFlags = options->splitFlags;
    const auto isEmpty = [&] { return store.firstBlock == nullptr; };

    ComponentNoiseFilter(image).FilterForTextLines(store);
    RemoveEdgeMarks(store);
    if (isEmpty()) return false;
    MergeOverlappingComponents(store);
    BuildLines(store);
    if (isEmpty()) return false;
    lines::ForEachLine(store, [&](ComponentNode* line) { MergeByColumnProjection(store, line); });
    if ((splitFlags & ~kNoSplitFlags) != 0) SplitWideComponents(store);
    RemoveSmallLines(store);
    if (isEmpty()) return false;
    SelectTrueLine(store);
    CleanTrueLine(store);
    return !isEmpty();
}

std::uint16_t TextLineGrouper::EstimateTextHeight(const ComponentStore& store) const {
    const ComponentNode* line = lines::WorkLine(store);
    if (line == nullptr) return 0;
    HeightHistogram<kHeightRoom> heights;
    lines::ForEachComponent(*line, [&](const ComponentNode* node) {
        const int nodeHeight = store::HeightOf(*node);
        if (store::WidthOf(*node) < 2 * nodeHeight) heights.Add(nodeHeight);
    });
    if (heights.Empty()) return store::HeightOf(*line);
    return static_cast<std::uint16_t>(heights.Typical(heights.ReachedByMoreThan(kTallestLeftOut)));
}

void TextLineGrouper::RemoveEdgeMarks(ComponentStore& store) const {
    const ComponentNode* line = lines::WorkLine(store);
    if (line == nullptr) return;
    const int typical = EstimateTextHeight(store);
    if (10 * typical <= 3 * height) return;
    lines::ForEachComponent(*line, [&](ComponentNode* node) {
        const int nodeWidth = store::WidthOf(*node);
        const int nodeHeight = store::HeightOf(*node);
        const bool isMark =
            5 * node->left > 4 * width &&
            (nodeHeight > 2 * typical || (nodeWidth > 2 * typical && 10 * nodeHeight < 6 * typical));
        const bool isStroke = 8 * node->left > 7 * width && 100 * nodeHeight > 125 * typical &&
                              10 * nodeHeight > 14 * nodeWidth;
        if (isMark || isStroke) store::DeleteComponent(store, node);
    });
}

void TextLineGrouper::RemoveSmallLines(ComponentStore& store) const {
    for (ComponentNode* block = store.firstBlock; block != nullptr;) {
        ComponentNode* const next = block->next;
        for (ComponentNode* line : lines::ChildrenOf(*block)) {
            if (store::HeightOf(*line) < kMinLineSide || store::WidthOf(*line) < kMinLineSide) {
                store::DeleteLine(store, line);
            }
        }
        if (block->firstChild == nullptr) store::DeleteBlock(store, block);
        block = next;
    }
}

}  // namespace tavrix
