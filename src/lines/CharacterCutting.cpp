// SPDX-License-Identifier: MIT
#include "lines/CharacterCutting.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"
#include "image/Ratio.h"
#include "lines/ColumnProfiles.h"
#include "lines/InkStrips.h"
#include "platform/Guarded.h"

namespace tavrix::lines {
namespace {

constexpr Ratio kNarrow{3, 2};    // heights that a single character is wide at most
constexpr int kMaxGaps = 4;       // gaps to its nearer neighbour that a component to be cut is wider than
constexpr Ratio kMinPiece{2, 3};  // piece widths between cuts, and from the first and last column
constexpr Ratio kJump{1, 2};      // component heights by which the span changes at a cut, exclusive
constexpr Ratio kThin{1, 4};      // component heights of ink in a column that may be a cut
constexpr int kLowSpan = 3;       // the part of the height that its span stays below, rounded down
constexpr int kDenseSpan = 2;     // the part of its ink that the gaps in it stay below, rounded down

enum Mark : std::uint8_t { kPlain, kCandidate, kCut };

// Marks columns where the extent of the ink jumps as cuts, thin ones as candidates, away from both ends.
std::vector<std::uint8_t> MarkColumns(const ColumnProfiles& profiles, int height, int pieceWidth) {
    const std::vector<std::uint16_t>& ink = profiles.ink;
    const std::vector<std::uint16_t>& span = profiles.span;
    const int columns = static_cast<int>(ink.size());
    const int border = std::max(kMinPiece.numerator * pieceWidth / kMinPiece.denominator, 1);
    std::vector<std::uint8_t> marks(ink.size(), kPlain);
    for (int column = border; column < columns - border; ++column) {
        const std::size_t i = static_cast<std::size_t>(column);
        if (std::abs(span[i] - span[i + 1]) > kJump * height) {
            marks[i] = kCut;
        } else if (ink[i] <= kThin * height && span[i] < height / kLowSpan &&
                   std::abs(span[i] - ink[i]) < ink[i] / kDenseSpan) {
            marks[i] = kCandidate;
        }
    }
    return marks;
}

// Turns the thinnest column of each run of marked columns into a cut. A run begins at a candidate.
void CutThinnestOfRuns(const std::vector<std::uint16_t>& ink, std::vector<std::uint8_t>& marks) {
    for (std::size_t i = 0; i < marks.size(); ++i) {
        if (marks[i] != kCandidate) continue;
        std::size_t thinnest = i;
        for (; i < marks.size() && marks[i] != kPlain; ++i) {
            if (ink[i] < ink[thinnest]) thinnest = i;
        }
        if (thinnest != 0) marks[thinnest] = kCut;
    }
}

// The cuts that stay: of cuts closer than two thirds of a piece the thinner one, the earlier one if equal.
// The component's first column counts as the cut before the first.
std::vector<int> ThinnedCuts(const std::vector<std::uint16_t>& ink, const std::vector<std::uint8_t>& marks,
                             int pieceWidth) {
    std::vector<int> cuts{0};
    for (int column = 1; column < static_cast<int>(marks.size()); ++column) {
        const std::size_t i = static_cast<std::size_t>(column);
        if (marks[i] != kCut) continue;
        if (column - cuts.back() < kMinPiece * pieceWidth) {
            if (ink[i] >= ink[static_cast<std::size_t>(cuts.back())]) continue;
            cuts.pop_back();
        }
        cuts.push_back(column);
    }
    if (cuts.front() == 0) cuts.erase(cuts.begin());
    return cuts;
}

// The columns of a component where it is to be cut, counted from its left; none when memory runs out.
std::optional<std::vector<int>> FindCuts(const DibImage& image, const Rect& box, int pieceWidth) {
    return Guarded(std::optional<std::vector<int>>(), [&] {
        const ColumnProfiles profiles = ProfileColumns(image, box);
        std::vector<std::uint8_t> marks = MarkColumns(profiles, box.Height(), pieceWidth);
        CutThinnestOfRuns(profiles.ink, marks);
        return ThinnedCuts(profiles.ink, marks, pieceWidth);
    });
}

// Columns between two neighbours in a line; 0 when they overlap or one is missing.
int GapBetween(const ComponentNode* left, const ComponentNode* right) {
    return left == nullptr || right == nullptr ? 0 : std::max(right->left - left->right, 0);
}

// The mean width of components that are not wide for their height, else the mean height of all.
int MeanCharacterWidth(const ComponentNode& line) {
    std::uint64_t widths = 0;
    std::uint64_t heights = 0;
    std::uint64_t narrow = 0;
    std::uint64_t all = 0;
    store::ForEachChild(line, [&](const ComponentNode* node) {
        const int width = store::WidthOf(*node);
        const int height = store::HeightOf(*node);
        heights += height;
        ++all;
        if (width > kNarrow * height) return;
        widths += width;
        ++narrow;
    });
    if (narrow != 0) return static_cast<int>(widths / narrow);
    return all != 0 ? static_cast<int>(heights / all) : 0;
}

// Cuts one component into pieces about pieceWidth wide, at thin places and sudden changes of extent.
void CutComponent(ComponentStore& store, ComponentNode* component, const DibImage& image, int pieceWidth) {
    Rect box = RectOf(*component);
    if (box.IsEmpty()) return;
    const std::optional<std::vector<int>> cuts = FindCuts(image, box, pieceWidth);
    if (!cuts) return;
    const std::int16_t left = box.x0;
    for (const int cut : *cuts) {
        const auto end = static_cast<std::int16_t>(left + cut);
        const Rect piece = ShrinkToInk(image, {box.x0, box.y0, end, box.y1});
        if (store::InsertComponent(store, component->parent, component->prev, component, piece) == nullptr) {
            break;  // the store is full: the rest stays one component
        }
        box.x0 = end;
    }
    SetRect(*component, ShrinkToInk(image, box));
}

}  // namespace

void SplitWideComponents(ComponentStore& store, const DibImage& image) {
    store::ForEachLine(store, [&](ComponentNode* line) {
        store::SortChildren(line);
        const int meanWidth = MeanCharacterWidth(*line);
        if (meanWidth == 0) return;
        store::ForEachChild(*line, [&](ComponentNode* component) {
            const int width = store::WidthOf(*component);
            const int pieces = (10 * width / meanWidth + 5) / 10;  // rounded
            const int gap =
                std::min(GapBetween(component->prev, component), GapBetween(component, component->next));
            if (pieces > 1 && width > kMaxGaps * gap) {
                CutComponent(store, component, image, width / pieces);
            }
        });
    });
}

}  // namespace tavrix::lines
