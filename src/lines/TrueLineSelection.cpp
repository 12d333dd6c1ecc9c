// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "components/ComponentStore.h"
#include "lines/HeightHistogram.h"
#include "lines/LineNodes.h"
#include "lines/LineProfile.h"
#include "lines/TextLineGrouper.h"

namespace tavrix {
namespace {

constexpr std::uint32_t kMeasureMask = 0xF0;  // of extra
constexpr std::uint32_t kMeasureFromLeft = 0x20;
constexpr int kShortLabelWidth = 250;             // columns; a short label is no wider
constexpr int kSmallType = 20;                    // rows; below this the best line's type counts as small
constexpr int kHeightRoom = 500;                  // rows
constexpr std::uint32_t kMaxLineHeight = 0xFFFF;  // rows; a node's memory may hold anything

// The mean height of the components that are large for the picture and not flat, else of all.
int TypicalHeight(const ComponentStore& store, int imageHeight) {
    std::uint64_t largeSum = 0;
    std::uint64_t largeCount = 0;
    std::uint64_t sum = 0;
    std::uint64_t count = 0;
    lines::ForEachLine(store, [&](const ComponentNode* line) {
        lines::ForEachComponent(*line, [&](const ComponentNode* node) {
            const int height = store::HeightOf(*node);
            sum += height;
            ++count;
            if (height <= imageHeight / 6 || 15 * height <= 10 * store::WidthOf(*node)) return;
            largeSum += height;
            ++largeCount;
        });
    });
    if (largeCount != 0) return static_cast<int>(largeSum / largeCount);
    return count != 0 ? static_cast<int>(sum / count) : 0;
}

// The union of all lines.
store::Box TextArea(const ComponentStore& store) {
    std::optional<store::Box> area;
    lines::ForEachLine(store, [&](const ComponentNode* line) {
        area = area ? lines::UnionOf(*area, lines::BoxOf(*line)) : lines::BoxOf(*line);
    });
    return area.value_or(store::Box{});
}

// Joins each line of a block with its successor while the two stand side by side.
void JoinPieces(ComponentStore& store, ComponentNode* block) {
    for (ComponentNode* line = block->firstChild; line != nullptr && line->next != nullptr;) {
        ComponentNode* const next = line->next;
        const int gap = std::max(next->left - line->right, line->left - next->right);
        const int offset = std::abs(store::CentreY(*line) - store::CentreY(*next));
        if (gap <= 0 || 10 * offset / gap >= 3) {
            line = next;
            continue;
        }
        lines::ForEachComponent(
            *next, [&](ComponentNode* component) { store::MoveToParent(next, component, line); });
        store::DeleteLine(store, next);
    }
}

// The row of a line's outermost component on the side that is measured from; none for an empty line.
std::optional<int> ReferenceRow(const ComponentNode& line, bool fromLeft) {
    const ComponentNode* outermost = line.firstChild;
    lines::ForEachComponent(line, [&](const ComponentNode* node) {
        if (fromLeft ? node->left < outermost->left : node->right > outermost->right) outermost = node;
    });
    if (outermost == nullptr) return std::nullopt;
    return store::CentreY(*outermost);
}

// A line in the tournament.
struct Contender {
    bool IsShort(int imageWidth) const { return 2 * width < imageWidth && profile.IsOfFewComponents(); }

    ComponentNode* line;
    int width;
    int row;
    LineProfile profile;
};

// What the rules of the tournament compare lines with.
class Tournament {
  public:
    Tournament(int pictureWidth, int pictureHeight, int typical, int middle)
        : imageWidth(pictureWidth), imageHeight(pictureHeight), typicalHeight(typical), midRow(middle) {}

    // The first rule that names a winner decides.
    bool Beats(const Contender& candidate, const Contender& best) const {
        if (!IsBig(candidate, best) || !Fits(candidate, best)) return false;
        if (StandsOutOnTheLeft(candidate, best) || ReplacesShortLine(candidate, best)) return true;
        return candidate.line->right < best.line->left || !YieldsTo(candidate, best);
    }

  private:
    bool IsBig(const Contender& candidate, const Contender& best) const {
        const LineProfile& profile = candidate.profile;
        return 4 * profile.CharacterHeight() > 3 * typicalHeight ||
               (6 * best.profile.height < imageHeight && profile.height > best.profile.height);
    }

    // A short label wins only when it is as wide as the best line, or nearly so and larger, or of display
    // size beside small type.
    bool Fits(const Contender& candidate, const Contender& best) const {
        const LineProfile& profile = candidate.profile;
        const bool isShortLabel = 2 * candidate.width <= imageWidth && profile.IsOfFewComponents() &&
                                  candidate.width <= kShortLabelWidth;
        if (!isShortLabel || candidate.width >= best.width) return true;
        if (4 * candidate.width >= 3 * best.width && profile.height > best.profile.height) return true;
        return best.profile.CharacterHeight() < kSmallType && 4 * profile.height > imageHeight &&
               2 * profile.height < imageHeight;
    }

    bool StandsOutOnTheLeft(const Contender& candidate, const Contender& best) const {
        return best.profile.CharacterHeight() < kSmallType && 4 * candidate.profile.height > imageHeight &&
               BeginsInLeftThird(candidate);
    }

    bool ReplacesShortLine(const Contender& candidate, const Contender& best) const {
        if (!best.IsShort(imageWidth) || !BeginsInLeftThird(candidate)) return false;
        const LineProfile& profile = candidate.profile;
        const int offset = OffsetOf(candidate);
        return 4 * profile.height > 3 * best.profile.height ||
               std::abs(profile.leftHeight - best.profile.height) < 5 ||
               (!profile.IsOfFewComponents() && offset < std::abs(candidate.row - imageHeight) &&
                offset < candidate.row);
    }

    // The reasons to lose of a candidate that does not stand wholly left of the best line.
    bool YieldsTo(const Contender& candidate, const Contender& best) const {
        const LineProfile& p = candidate.profile;
        const LineProfile& b = best.profile;
        const bool isFarther = OffsetOf(candidate) > OffsetOf(best);
        if (candidate.line->left > best.line->right && 4 * b.height > 3 * typicalHeight) return true;
        if (best.line->left <= candidate.line->left && !BeginsInLeftThird(candidate) && isFarther) {
            return true;
        }
        if (p.leftHeight > b.leftHeight + 5) return false;
        if (p.leftHeight + 5 < b.leftHeight) {
            return p.leftHeight + 10 <= b.leftHeight || p.rightHeight <= b.rightHeight + 15 ||
                   (isFarther && p.rightHeight < b.leftHeight + 10);
        }
        if (p.rightHeight <= b.rightHeight + 5) {
            return p.rightHeight + 5 < b.rightHeight || !BeginsInLeftThird(candidate) || isFarther;
        }
        return p.IsOfFewComponents() && 2 * candidate.line->left > imageWidth;
    }

    bool BeginsInLeftThird(const Contender& candidate) const { return 3 * candidate.line->left < imageWidth; }
    int OffsetOf(const Contender& contender) const { return std::abs(contender.row - midRow); }

    const int imageWidth;
    const int imageHeight;
    const int typicalHeight;
    const int midRow;
};

// The height of a line's characters, for a line that no tournament has measured.
int EstimateLineHeight(const ComponentNode& line) {
    HeightHistogram<kHeightRoom> heights;
    lines::ForEachComponent(line, [&](const ComponentNode* node) {
        const int width = store::WidthOf(*node);
        const int height = store::HeightOf(*node);
        if (width < 2 * height && height < 3 * width) heights.Add(height);
    });
    return heights.Empty() ? 1 : heights.Typical(heights.Smallest());
}

// Decides which components of a line of very large type are no text. Limits are in multiples of the
// line's character height, those for strokes in tenths.
class LineCleaner {
  public:
    LineCleaner(const ComponentNode& cleanedLine, int characterHeight, int pictureWidth, int pictureHeight)
        : line(cleanedLine),
          height(characterHeight),
          imageWidth(pictureWidth),
          imageHeight(pictureHeight),
          isBig(3 * characterHeight > pictureHeight),
          ruleWidth(isBig ? 3 : 4),
          longStroke(isBig ? 15 : 18),
          plainStroke(isBig ? 13 : 15),
          wordGap(isBig ? 2 : 3) {}

    // previousRight: the right side of the component that was looked at before, if any.
    bool IsStranger(const ComponentNode& c, std::optional<int> previousRight) const {
        const int w = store::WidthOf(c);
        const int h = store::HeightOf(c);
        if (w >= 6 * h && w > ruleWidth * height) return true;
        if (h < 6 * w) return !IsNextWord(c, previousRight) && IsAtBorder(c);
        if (10 * h > longStroke * height) return true;
        if (10 * h > plainStroke * height && IsApart(c)) return true;
        return IsAtBorder(c);
    }

  private:
    // After a wide gap, and far enough into the line.
    bool IsNextWord(const ComponentNode& c, std::optional<int> previousRight) const {
        if (!previousRight || c.left - *previousRight <= wordGap * height) return false;
        const int reached = *previousRight - line.left;
        return 2 * reached > store::WidthOf(line) || reached > 5 * height;
    }

    // A long stroke at the line's end (or the line's only neighbours) that its neighbour does not go with.
    bool IsApart(const ComponentNode& c) const {
        if (c.prev != nullptr && c.next != nullptr && c.next->next != nullptr) return false;
        const ComponentNode* const neighbour = c.prev != nullptr ? c.prev : c.next;
        if (neighbour == nullptr) return false;
        const int gap = c.prev != nullptr ? c.left - neighbour->right : neighbour->left - c.right;
        if (gap > height) return true;
        if (5 * store::HeightOf(*neighbour) <= 4 * height) return false;
        return 2 * std::abs(c.top - neighbour->top) > height ||
               2 * std::abs(c.bottom - neighbour->bottom) > height;
    }

    // Touches the picture's border without being text that was cut off there.
    bool IsAtBorder(const ComponentNode& c) const {
        if (c.left != 0 && c.right != imageWidth - 1 && c.bottom != 0 && c.top != imageHeight - 1) {
            return false;
        }
        if (10 * store::HeightOf(c) > longStroke * height) return true;
        return c.left == 0 && 13 * store::WidthOf(c) < 10 * height && c.next != nullptr &&
               c.next->left - c.right >= 4;
    }

    const ComponentNode& line;
    const int height;
    const int imageWidth;
    const int imageHeight;
    const bool isBig;
    const int ruleWidth;
    const int longStroke;
    const int plainStroke;
    const int wordGap;
};

}  // namespace

void TextLineGrouper::SelectTrueLine(ComponentStore& store) const {
    const bool joinsPieces = (selectFlags & TAVRIX_SELECT_JOIN_PIECES) != 0;
    const int typicalHeight = TypicalHeight(store, height);
    const store::Box textArea = TextArea(store);
    if (joinsPieces) {
        for (ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
            JoinPieces(store, block);
        }
    }
    if (store.firstBlock != nullptr) store::SortChildrenByLeft(store.firstBlock, true);
    if ((selectFlags & TAVRIX_SELECT_ALL_LINES) != 0) return;

    const int base = joinsPieces ? textArea.bottom : 0;
    const int midRow = (joinsPieces ? textArea.top - textArea.bottom + 1 : height) / 2;
    const bool fromLeft = (extra & kMeasureMask) == kMeasureFromLeft;
    const Tournament tournament(width, height, typicalHeight, midRow);
    std::optional<Contender> best;
    lines::ForEachLine(store, [&](ComponentNode* line) {
        if (store::HeightOf(*line) < typicalHeight / 2) {
            store::DeleteLine(store, line);
            return;
        }
        const std::optional<int> row = ReferenceRow(*line, fromLeft);
        if (!row) return;
        const Contender candidate{line, store::WidthOf(*line), *row - base, LineProfile(*line, height)};
        if (best && !tournament.Beats(candidate, *best)) {
            store::DeleteLine(store, line);
            return;
        }
        if (best) store::DeleteLine(store, best->line);
        best = candidate;
    });
    ComponentNode* const first = lines::WorkLine(store);
    if (best && first != nullptr) {
        first->pixelCount = static_cast<std::uint32_t>(best->profile.components);
        first->lineHeight = static_cast<std::uint32_t>(best->profile.CharacterHeight());
    }
}

void TextLineGrouper::CleanTrueLine(ComponentStore& store) const {
    ComponentNode* const block = store.firstBlock;
    if (block == nullptr) return;
    for (ComponentNode* line = block->firstChild; line != nullptr; line = line->next) {
        const int characterHeight = line->lineHeight != 0
                                        ? static_cast<int>(std::min(line->lineHeight, kMaxLineHeight))
                                        : EstimateLineHeight(*line);
        if (5 * characterHeight <= height) continue;
        const LineCleaner cleaner(*line, characterHeight, width, height);
        std::optional<int> previousRight;
        lines::ForEachComponent(*line, [&](ComponentNode* node) {
            const int right = node->right;
            if (cleaner.IsStranger(*node, previousRight)) store::DeleteComponent(store, node);
            previousRight = right;
        });
    }
    store::RebuildLineBoxes(store, block);
    if (block->firstChild == nullptr) store::DeleteBlock(store, block);
}

}  // namespace tavrix
