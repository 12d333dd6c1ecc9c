// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "lines/LineNodes.h"
#include "lines/TextLineGrouper.h"

namespace tavrix {
namespace {

constexpr int kDotSide = 10;        // pixels; a component below this in both sides may be a dot
constexpr int kSmallSide = 15;      // pixels; one below this in both sides is compared with a larger one
constexpr int kMinTypeHeight = 20;  // rows; lines above this may be joined over wide gaps
constexpr int kRefSlack = 7;        // rows that a pair may stand out from its reference, on either side
constexpr int kNearSlack = 5;       // rows that a small pair may stand out from its reference
constexpr int kDotGap = 6;          // rows between a dot and its stem, exclusive
constexpr int kPieceGap = 11;       // rows between the pieces of a tall letter, exclusive

// A component's box, with its height as the unsigned 16-bit number that the rules compare.
struct Box : store::Box {
    explicit Box(const ComponentNode& node)
        : store::Box(lines::BoxOf(node)), width(store::WidthOf(node)), height(store::HeightOf(node)) {}
    bool IsDot() const { return width < kDotSide && height < kDotSide; }
    bool IsSlim() const { return 10 * height > 19 * width; }
    bool IsSmall() const { return width < kSmallSide && height < kSmallSide; }
    int width;
    int height;
};

// Rows between two boxes, negative when they share some.
int GapOf(const store::Box& a, const store::Box& b) {
    return std::max(a.bottom, b.bottom) - std::min(a.top, b.top);
}

// LineStats of a line, and its components sorted by left at hand for SameLineVote.
struct Line {
    Line() = default;
    explicit Line(ComponentNode* lineNode) : node(lineNode) { Measure(); }

    void Measure() {
        boxes.clear();
        reach.clear();
        std::vector<int> heights;
        for (const ComponentNode* child = node->firstChild; child != nullptr; child = child->next) {
            boxes.emplace_back(*child);
            reach.push_back(reach.empty() ? child->right : std::max<int>(reach.back(), child->right));
            heights.push_back(boxes.back().height);
        }
        if (heights.empty()) return;
        const auto quartile = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 4);
        std::nth_element(heights.begin(), quartile, heights.end(), std::greater<>());
        quartileHeight = *quartile;
    }
    int Count() const { return static_cast<int>(boxes.size()); }

    ComponentNode* node = nullptr;  // null once merged into another line
    std::vector<Box> boxes;         // in list order, ascending left
    std::vector<int> reach;         // greatest right of the boxes up to each one
    int quartileHeight = 0;         // of the tallest quarter, the smallest
};

// One vote on whether two lines are one: the components of the shorter line look for their counterparts
// in the other.
class SameLineVote {
  public:
    SameLineVote(const Line& a, const Line& b)
        : shorter(b.Count() <= a.Count() ? b : a),
          other(b.Count() <= a.Count() ? a : b),
          height(std::max(a.quartileHeight, b.quartileHeight)) {}

    bool Passes() const {
        int votes = 0;
        for (const Box& c : shorter.boxes) votes += VotesOf(c);
        return 2 * votes > shorter.Count();
    }

  private:
    enum class Verdict { kVote, kNext, kLookAround };

    int VotesOf(const Box& c) const {
        const std::vector<Box>& boxes = other.boxes;
        const int stop =
            static_cast<int>(std::partition_point(boxes.begin(), boxes.end(),
                                                  [&](const Box& d) { return d.left <= c.right; }) -
                             boxes.begin());
        // None before the first one whose reach comes to c stands over c's columns.
        const int start = static_cast<int>(
            std::lower_bound(other.reach.begin(), other.reach.begin() + stop, c.left) - other.reach.begin());
        int votes = 0;
        bool overlapped = false;
        for (int d = start; d < stop; ++d) {
            if (std::min(c.right, At(d).right) - std::max(c.left, At(d).left) + 1 < 1) continue;
            overlapped = true;
            switch (Judge(c, d)) {
                case Verdict::kVote: return votes + 1;
                case Verdict::kNext: break;
                case Verdict::kLookAround: votes += FitsBesideD(c, d) ? 1 : 0; break;
            }
        }
        if (!overlapped) return FitsBetween(c, stop) ? 1 : 0;
        return votes;
    }

    // c and the component d of the other line stand over the same columns.
    Verdict Judge(const Box& c, int index) const {
        const Box& d = At(index);
        const int top = std::max(c.top, d.top);
        const int bottom = std::min(c.bottom, d.bottom);
        const int unionHeight = top - bottom + 1;
        const int gap = GapOf(c, d);
        const bool isDotAndStem = (c.IsDot() && d.IsSlim()) || (d.IsDot() && c.IsSlim());

        if (10 * unionHeight >= 13 * height) {
            if (10 * unionHeight >= 14 * height) return Verdict::kNext;
            const bool isDotNear = (c.IsDot() && d.IsSlim() && 3 * (c.bottom - d.top) < d.height) ||
                                   (d.IsDot() && c.IsSlim() && 3 * (d.bottom - c.top) < c.height);
            return isDotNear && 10 * gap < 3 * unionHeight ? Verdict::kVote : Verdict::kNext;
        }
        if (gap < kDotGap) return Verdict::kVote;
        if (isDotAndStem && 10 * gap < 3 * unionHeight) return Verdict::kVote;

        const Box* const ref = ReferenceNear(c, index);
        if (ref == nullptr) return Verdict::kLookAround;
        if (c.IsSmall() && d.IsSmall() && top < ref->top + kNearSlack && bottom > ref->bottom - kNearSlack) {
            return Verdict::kVote;
        }
        if (std::abs(top - ref->top) > kRefSlack && std::abs(bottom - ref->bottom) > kRefSlack) {
            const bool isInside =
                ref->height < height + 3 && unionHeight < height && top < ref->top && bottom > ref->bottom;
            return isInside ? Verdict::kVote : Verdict::kLookAround;
        }
        const bool isPiece = gap < kPieceGap || 10 * unionHeight <= 12 * height || 3 * d.height <= 2 * height;
        return isPiece ? Verdict::kVote : Verdict::kNext;
    }

    // A component of full height beside d: the first one to the left, or the first one to the right when
    // its height is nearer to the lines'.
    const Box* ReferenceNear(const Box& c, int d) const {
        const auto isTall = [&](const Box& e) { return 3 * e.height > 2 * height; };
        const Box* ref = FindBack(d - 1, c.left - 2 * height, isTall);
        const Box* const after = FindForward(d + 1, c.right + 2 * height, isTall);
        if (after != nullptr &&
            (ref == nullptr || std::abs(after->height - height) < std::abs(ref->height - height))) {
            ref = after;
        }
        return ref;
    }

    // Whether c and d together fit into the rows of a component beside them.
    bool FitsBesideD(const Box& c, int d) const {
        if (c.height >= height) return false;
        const int top = std::max(c.top, At(d).top);
        const int bottom = std::min(c.bottom, At(d).bottom);
        const auto holds = [&](const Box& e) {
            return 10 * e.height < 12 * height && top < e.top + kNearSlack && bottom > e.bottom - kNearSlack;
        };
        return FindBack(d - 1, c.left - 3 * height, holds) != nullptr ||
               FindForward(d, c.right + 3 * height, holds) != nullptr;
    }

    // Whether c, which stands over none of the other line's columns, shares rows with the components to
    // its left and right. `stop` is the first one to the right.
    bool FitsBetween(const Box& c, int stop) const {
        const auto isPlain = [&](const Box& e) { return 10 * e.height < 15 * height; };
        for (const int beside : {stop - 1, stop}) {
            if (beside >= 0 && beside < other.Count() && isPlain(At(beside)) && GapOf(c, At(beside)) < 0) {
                return true;
            }
        }
        if (2 * c.height >= height) return false;
        const auto isLevel = [&](const Box& e) {
            return isPlain(e) && (GapOf(c, e) < 0 || (c.IsDot() && GapOf(c, e) < kDotGap));
        };
        return FindBack(stop - 1, c.left - 2 * height, isLevel) != nullptr ||
               FindForward(stop, c.right + 2 * height, isLevel) != nullptr;
    }

    // The first component of the other line that passes, from an index towards the start while they reach
    // minRight, or towards the end while they begin by maxLeft.
    template <class Test>
    const Box* FindBack(int from, int minRight, Test&& passes) const {
        for (int i = from; i >= 0 && At(i).right >= minRight; --i) {
            if (passes(At(i))) return &At(i);
        }
        return nullptr;
    }
    template <class Test>
    const Box* FindForward(int from, int maxLeft, Test&& passes) const {
        for (int i = from; i < other.Count() && At(i).left <= maxLeft; ++i) {
            if (passes(At(i))) return &At(i);
        }
        return nullptr;
    }
    const Box& At(int index) const { return other.boxes[static_cast<std::size_t>(index)]; }

    const Line& shorter;
    const Line& other;
    const int height;
};

// Joins pairs of lines of one block. A pass takes each line in list order and merges the other lines that
// belong to it, in list order too, into it. An index of the boxes leads to the lines near enough; after the
// first pass a line is taken only when it or a line near it has changed since.
class LinePairs {
  public:
    LinePairs(const TextLineGrouper& grouperOfBlock, ComponentStore& storeOfBlock,
              const std::vector<ComponentNode*>& nodes)
        : grouper(grouperOfBlock),
          store(storeOfBlock),
          lines(nodes.begin(), nodes.end()),
          index(nodes.size(), [&](std::size_t i) { return lines::BoxOf(*nodes[i]); }),
          hasChance(nodes.size(), 1) {
        for (const Line& line : lines) greatestHeight = std::max(greatestHeight, line.quartileHeight);
    }

    void MergeAll() {
        bool merged = true;
        while (merged) {
            merged = false;
            for (int i = 0; i < index.Count(); ++i) {
                if (LineAt(i).node != nullptr &&
                    std::exchange(hasChance[static_cast<std::size_t>(i)], std::uint8_t{0})) {
                    merged |= MergeInto(i);
                }
            }
        }
    }

  private:
    Line& LineAt(int i) { return lines[static_cast<std::size_t>(i)]; }

    // What every line that the rules may join with this one meets.
    store::Box Reach(const Line& line) const {
        // Up to 3.5 heights of the line of larger type when that is less than 1.2 times the other, else 1.5.
        const int columns = std::max(9 * line.quartileHeight / 2, 3 * greatestHeight / 2) + 1;
        return lines::Extended(lines::BoxOf(*line.node), columns, 0);
    }

    bool MergeInto(int current) {
        Line& line = LineAt(current);
        bool merged = false;
        for (int i = index.Next(0, Reach(line)); i < index.Count(); i = index.Next(i + 1, Reach(line))) {
            if (i == current || !BelongTogether(line, LineAt(i))) continue;
            Absorb(line, LineAt(i));
            index.Remove(i);
            merged = true;
        }
        if (!merged) return false;
        index.Set(current, lines::BoxOf(*line.node));
        greatestHeight = std::max(greatestHeight, line.quartileHeight);
        for (int i = index.Next(0, Reach(line)); i < index.Count(); i = index.Next(i + 1, Reach(line))) {
            hasChance[static_cast<std::size_t>(i)] = 1;
        }
        return true;
    }

    void Absorb(Line& a, Line& b) {
        lines::ForEachComponent(*b.node,
                                [&](ComponentNode* node) { store::MoveToParent(b.node, node, a.node); });
        store::DeleteLine(store, b.node);
        b = Line();
        store::SortChildren(a.node, true);
        grouper.MergeByColumnProjection(store, a.node);
        store::SortChildren(a.node, true);
        a.Measure();
    }

    bool BelongTogether(const Line& a, const Line& b) const {
        const int columnGap = std::max(a.node->left, b.node->left) - std::min(a.node->right, b.node->right);
        const int rowGap = GapOf(lines::BoxOf(*a.node), lines::BoxOf(*b.node));
        if (columnGap <= 0 && rowGap <= 0) return SameLineVote(a, b).Passes();
        if (columnGap < 0) return false;
        return a.node->left < b.node->left ? Continues(a, b, columnGap) : Continues(b, a, columnGap);
    }

    // Whether the right line, `gap` columns after the left one, continues it.
    bool Continues(const Line& leftLine, const Line& rightLine, int gap) const {
        const int greater = std::max(leftLine.quartileHeight, rightLine.quartileHeight);
        const int smaller = std::min(leftLine.quartileHeight, rightLine.quartileHeight);
        if (2 * gap >= 7 * greater || leftLine.boxes.empty() || rightLine.boxes.empty()) return false;

        auto last = leftLine.boxes.end() - 1;
        while (last != leftLine.boxes.begin() && 3 * last->height <= 2 * leftLine.quartileHeight) --last;
        const Box& first = rightLine.boxes.front();
        const int distance = first.left - last->right;
        const int overlap = -GapOf(*last, first);
        const int height = std::min(last->height, first.height);
        const bool isWide = 2 * gap > 3 * greater;

        if (10 * greater >= 12 * smaller) {
            return 2 * gap < 3 * greater && distance < 3 * greater && 10 * overlap > 3 * height;
        }
        if (smaller <= kMinTypeHeight) return false;
        const int width = grouper.width;
        if (isWide && ((4 * rightLine.node->left > 3 * width && gap > 2 * greater) ||
                       5 * rightLine.node->left > 4 * width)) {
            return false;
        }
        const int needed = 2 * first.height > rightLine.quartileHeight ? 6 * height / 10 : 0;
        return distance < 5 * greater && overlap > needed;
    }

    const TextLineGrouper& grouper;
    ComponentStore& store;
    std::vector<Line> lines;
    BoxIndex index;
    std::vector<std::uint8_t> hasChance;
    int greatestHeight = 0;  // of the quartile heights that lines have had
};

}  // namespace

void TextLineGrouper::MergeLinePairs(ComponentStore& store) const {
    if (store.firstBlock == nullptr) return;
    LinePairs(*this, store, lines::ChildrenOf(*store.firstBlock)).MergeAll();
}

}  // namespace tavrix
