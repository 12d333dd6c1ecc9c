// SPDX-License-Identifier: MIT
#include "lines/LineCleaning.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Ratio.h"
#include "lines/TextHeight.h"

namespace tavrix::lines {
namespace {

constexpr Ratio kLargeType{1, 5};  // of the page's height; only lines of larger type are cleaned
constexpr Ratio kHugeType{1, 3};   // above this the limits are tighter
// In character heights of the line.
struct Limits {
    int ruleWidth;      // a rule is wider
    Ratio longStroke;   // an upright stroke above this is none of a letter
    Ratio plainStroke;  // one up to this is
    int wordGap;        // the next word begins after more
};
constexpr Limits kLargeLimits{4, {18, 10}, {15, 10}, 3};
constexpr Limits kHugeLimits{3, {15, 10}, {13, 10}, 2};
constexpr Ratio kFullHeight{4, 5};      // a neighbour above this is compared with a stroke
constexpr Ratio kMaxStep{1, 2};         // that a stroke stands out from such a neighbour, above or below
constexpr int kFarInHeights = 5;        // columns from the line's start after which words may follow
constexpr Ratio kMinEdgeWidth{10, 13};  // a component cut off at the left border is not narrower
// Others
constexpr int kRuleAspect = 6;     // a rule or stroke is at least so many times longer than thick
constexpr Ratio kFarInLine{1, 2};  // of the line's width, after which words may follow
constexpr int kEdgeGap = 4;        // columns from a component at the left border to the next one
constexpr std::uint32_t kMaxLineHeight = 0xFFFF;  // rows; a node's memory may hold anything

// Decides which components of a line of very large type are no text.
class LineCleaner {
  public:
    LineCleaner(const ComponentNode& cleanedLine, int characterHeight, const ImageFrame& cardPage)
        : line(cleanedLine),
          height(characterHeight),
          page(cardPage),
          limits(characterHeight > kHugeType * cardPage.height ? kHugeLimits : kLargeLimits) {}

    // previousRight: the right side of the component that was looked at before, if any.
    bool IsStranger(const ComponentNode& c, std::optional<int> previousRight) const {
        const int w = store::WidthOf(c);
        const int h = store::HeightOf(c);
        if (w >= kRuleAspect * h && w > limits.ruleWidth * height) return true;
        if (h < kRuleAspect * w) return !IsNextWord(c, previousRight) && IsAtBorder(c);
        if (h > limits.longStroke * height) return true;
        if (h > limits.plainStroke * height && IsApart(c)) return true;
        return IsAtBorder(c);
    }

  private:
    // After a wide gap, and far enough into the line.
    bool IsNextWord(const ComponentNode& c, std::optional<int> previousRight) const {
        if (!previousRight || c.left - *previousRight <= limits.wordGap * height) return false;
        const int reached = *previousRight - line.left;
        return reached > kFarInLine * store::WidthOf(line) || reached > kFarInHeights * height;
    }

    // A long stroke at the line's end (or the line's only neighbours) that its neighbour does not go with.
    bool IsApart(const ComponentNode& c) const {
        if (c.prev != nullptr && c.next != nullptr && c.next->next != nullptr) return false;
        const ComponentNode* const neighbour = c.prev != nullptr ? c.prev : c.next;
        if (neighbour == nullptr) return false;
        const int gap = c.prev != nullptr ? c.left - neighbour->right : neighbour->left - c.right;
        if (gap > height) return true;
        if (store::HeightOf(*neighbour) <= kFullHeight * height) return false;
        return std::abs(c.top - neighbour->top) > kMaxStep * height ||
               std::abs(c.bottom - neighbour->bottom) > kMaxStep * height;
    }

    // Touches the picture's border without being text that was cut off there.
    bool IsAtBorder(const ComponentNode& c) const {
        if (c.left != 0 && c.right != page.width - 1 && c.bottom != 0 && c.top != page.height - 1) {
            return false;
        }
        if (store::HeightOf(c) > limits.longStroke * height) return true;
        return c.left == 0 && store::WidthOf(c) < kMinEdgeWidth * height && c.next != nullptr &&
               c.next->left - c.right >= kEdgeGap;
    }

    const ComponentNode& line;
    const int height;
    const ImageFrame& page;
    const Limits& limits;
};

}  // namespace

void CleanTrueLine(ComponentStore& store, const ImageFrame& page) {
    ComponentNode* const block = store.firstBlock;
    if (block == nullptr) return;
    store::ForEachChild(*block, [&](const ComponentNode* line) {
        const int characterHeight = line->lineHeight != 0
                                        ? static_cast<int>(std::min(line->lineHeight, kMaxLineHeight))
                                        : EstimateLineHeight(*line);
        if (characterHeight <= kLargeType * page.height) return;
        const LineCleaner cleaner(*line, characterHeight, page);
        std::optional<int> previousRight;
        store::ForEachChild(*line, [&](ComponentNode* node) {
            const int right = node->right;
            if (cleaner.IsStranger(*node, previousRight)) store::DeleteComponent(store, node);
            previousRight = right;
        });
    });
    store::RebuildLineBoxes(store, block);
    if (block->firstChild == nullptr) store::DeleteBlock(store, block);
}

}  // namespace tavrix::lines
