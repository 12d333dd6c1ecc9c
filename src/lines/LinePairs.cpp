// SPDX-License-Identifier: MIT
#include "lines/LinePairs.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentTree.h"
#include "image/Ratio.h"
#include "image/Rect.h"
#include "lines/LineAbsorption.h"
#include "lines/MeasuredLine.h"
#include "lines/SameLineVote.h"

namespace tavrix::lines {
namespace {

// Two lines side by side. Gaps, distances of their nearest full components and type heights (a line's
// quartile height) are compared with the greater of the two type heights.
constexpr Ratio kMaxGap{7, 2};           // heights between lines, exclusive
constexpr Ratio kWideGap{3, 2};          // heights; from here on only type of one size goes on
constexpr Ratio kOtherType{12, 10};      // times that the larger type is the smaller, for another size
constexpr Ratio kFullHeight{2, 3};       // heights of its line that a line's last full component exceeds
constexpr int kMaxDistance = 3;          // heights between components of different sizes, exclusive
constexpr int kMaxSameTypeDistance = 5;  // heights between components of one size, exclusive
constexpr int kMinTypeHeight = 20;       // rows; lines above this may be joined over wide gaps
constexpr Ratio kRightPart{3, 4};        // of the page's width, where a line begins only ..
constexpr int kMaxRightGap = 2;          // .. so many heights after another at most
constexpr Ratio kFarRightPart{4, 5};     // of the page's width, where it begins after no wide gap
constexpr Ratio kMinOverlap{3, 10};      // of the lower component's height, in different sizes, exclusive
constexpr Ratio kFullOverlap{6, 10};     // the same in one size, exclusive ..
constexpr Ratio kHalfHeight{1, 2};       // .. where the right line's first component is higher than this
constexpr Ratio kNone{0, 1};             // else

// The lines that a line is to be compared with at its next turn: those near it that have changed since it
// was compared with all, or all again when it has changed itself or they are many.
class Candidates {
  public:
    static Candidates All() { return Candidates(kRoom + 1); }
    static Candidates None() { return Candidates(0); }
    bool AreAll() const { return count > kRoom; }
    bool AreNone() const { return count == 0; }
    void Add(int line) {
        if (count < kRoom) lines[count] = line;
        if (count <= kRoom) ++count;
    }
    // Where they are not all: from first to last.
    std::span<const int> InOrder() {
        std::sort(lines, lines + count);
        return {lines, lines + count};
    }

  private:
    explicit Candidates(int size) : count(size) {}

    static constexpr int kRoom = 15;
    int lines[kRoom];
    int count;
};

// Joins pairs of lines of one block. A pass takes each line in list order and merges the other lines that
// belong to it, in list order too, into it. An index of the boxes leads to the lines near enough; after the
// first pass two lines are compared only when one of them has changed since.
class LinePairs {
  public:
    LinePairs(ComponentStore& storeOfBlock, const std::vector<ComponentNode*>& nodes, int width)
        : store(storeOfBlock),
          absorption(storeOfBlock),
          pageWidth(width),
          lines(MeasuredLines(storeOfBlock, nodes)),
          index(nodes.size(), [&](std::size_t i) { return Surroundings(lines[i]); }),
          candidates(nodes.size(), Candidates::All()) {}

    ~LinePairs() {
        for (MeasuredLine& line : lines) {
            if (line.isAhead) line.WriteLinks(store);
        }
    }
    LinePairs(const LinePairs&) = delete;
    LinePairs& operator=(const LinePairs&) = delete;

    void MergeAll() {
        bool merged = true;
        while (merged) {
            merged = false;
            for (int i = 0; i < index.Count(); ++i) {
                const bool isDue =
                    LineAt(i).node != nullptr && !candidates[static_cast<std::size_t>(i)].AreNone();
                if (isDue) merged |= TakeTurn(i);
            }
        }
    }

  private:
    static std::vector<MeasuredLine> MeasuredLines(const ComponentStore& store,
                                                   const std::vector<ComponentNode*>& nodes) {
        std::vector<MeasuredLine> lines;
        lines.reserve(nodes.size());
        for (ComponentNode* node : nodes) lines.emplace_back(node, store);
        return lines;
    }

    MeasuredLine& LineAt(int i) { return lines[static_cast<std::size_t>(i)]; }

    // Two lines that the rules may join are less than kMaxGap heights of the smaller type apart, which may be
    // nearly kOtherType times that, or kWideGap heights of the larger. Each stands in the index with its
    // share of the latter, and looks as far as its own type reaches.
    static Rect Surroundings(const MeasuredLine& line) {
        return Extended(RectOf(*line.node), 3 * line.quartileHeight / 2 + 1, 0);
    }
    static Rect Reach(const MeasuredLine& line) {
        return Extended(RectOf(*line.node), 9 * line.quartileHeight / 2 + 1, 0);
    }

    // Whether the line took in any other.
    bool TakeTurn(int current) {
        Candidates waiting = std::exchange(candidates[static_cast<std::size_t>(current)], Candidates::None());
        MeasuredLine& line = LineAt(current);
        bool merged = false;
        const auto compareWith = [&](int i) {
            if (i == current || LineAt(i).node == nullptr || !BelongTogether(line, LineAt(i))) return;
            absorption.Absorb(line, LineAt(i));
            index.Remove(i);
            merged = true;
        };
        int rest = 0;  // all lines from this one on
        if (!waiting.AreAll()) {
            rest = index.Count();
            for (const int i : waiting.InOrder()) {
                compareWith(i);
                if (!merged) continue;
                rest = i + 1;
                break;
            }
        }
        for (int i = index.Next(rest, Reach(line)); i < index.Count(); i = index.Next(i + 1, Reach(line))) {
            compareWith(i);
        }
        if (!merged) return false;
        index.Set(current, Surroundings(line));
        for (int i = index.Next(0, Reach(line)); i < index.Count(); i = index.Next(i + 1, Reach(line))) {
            candidates[static_cast<std::size_t>(i)].Add(current);
        }
        candidates[static_cast<std::size_t>(current)] = Candidates::All();
        return true;
    }

    bool BelongTogether(const MeasuredLine& a, const MeasuredLine& b) const {
        const Rect shared = Intersection(RectOf(*a.node), RectOf(*b.node));
        if (!shared.IsEmpty()) return AreSameLine(a, b);
        const int gap = shared.x0 - shared.x1;
        if (gap < 0) return false;
        return a.node->left < b.node->left ? Continues(a, b, gap) : Continues(b, a, gap);
    }

    // Whether the right line, `gap` columns after the left one, continues it.
    bool Continues(const MeasuredLine& leftLine, const MeasuredLine& rightLine, int gap) const {
        const int greater = std::max(leftLine.quartileHeight, rightLine.quartileHeight);
        const int smaller = std::min(leftLine.quartileHeight, rightLine.quartileHeight);
        if (gap >= kMaxGap * greater || leftLine.boxes.empty() || rightLine.boxes.empty()) return false;

        auto last = leftLine.boxes.end() - 1;
        while (last != leftLine.boxes.begin() && last->height <= kFullHeight * leftLine.quartileHeight)
            --last;
        const LetterBox& first = rightLine.boxes.front();
        const int distance = first.x0 - last->x1;
        const int overlap = -RowGap(*last, first);
        const int height = std::min(last->height, first.height);

        if (greater >= kOtherType * smaller) {
            return gap < kWideGap * greater && distance < kMaxDistance * greater &&
                   overlap > kMinOverlap * height;
        }
        if (smaller <= kMinTypeHeight) return false;
        const int left = rightLine.node->left;
        if (gap > kWideGap * greater && ((left > kRightPart * pageWidth && gap > kMaxRightGap * greater) ||
                                         left > kFarRightPart * pageWidth)) {
            return false;
        }
        const bool isFull = first.height > kHalfHeight * rightLine.quartileHeight;
        return distance < kMaxSameTypeDistance * greater &&
               overlap > (isFull ? kFullOverlap : kNone) * height;
    }

    ComponentStore& store;
    LineAbsorption absorption;
    const int pageWidth;
    std::vector<MeasuredLine> lines;
    BoxIndex index;
    std::vector<Candidates> candidates;  // of each line
};

}  // namespace

void MergeLinePairs(ComponentStore& store, int pageWidth) {
    if (store.firstBlock == nullptr) return;
    LinePairs(store, store::ChildrenOf(*store.firstBlock), pageWidth).MergeAll();
}

}  // namespace tavrix::lines
