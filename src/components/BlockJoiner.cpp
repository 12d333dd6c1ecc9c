// SPDX-License-Identifier: MIT
#include "components/BlockJoiner.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"
#include "image/Ratio.h"
#include "image/Rect.h"

namespace tavrix {
namespace {

constexpr int kMaxShortSide = 5;    // mean sizes; one of two aligned blocks is no thicker
constexpr Ratio kMinOverlap{4, 5};  // of the shorter of two aligned sides, exclusive
constexpr int kMaxExcess = 3;       // mean sizes that the longer one stands out, exclusive
constexpr int kMaxGap = 4;          // longer sides between two aligned blocks, exclusive
constexpr int kMaxAspect = 2;       // an aligned block is no more times longer along the other than across
constexpr int kFarGap = 9999;       // pixels; gaps from here on do not join blocks
constexpr int kNotAligned = -1;

// A set of list positions that is worked off in ascending order while it grows.
class PositionSet {
  public:
    PositionSet(std::size_t count, bool isFull) : flags(count, isFull) {}
    void Insert(int position) { flags[position] = 1; }
    void Clear() { std::fill(flags.begin(), flags.end(), char{0}); }
    // The first member from position `from` on, or -1.
    int Next(int from) const {
        const auto start = static_cast<std::size_t>(from);
        if (start >= flags.size()) return -1;
        const void* found = std::memchr(flags.data() + start, 1, flags.size() - start);
        return found != nullptr ? static_cast<int>(static_cast<const char*>(found) - flags.data()) : -1;
    }

  private:
    std::vector<char> flags;
};

// Joins blocks whose first lines are aligned. A pass gives each block in list order a turn to take in the
// nearest aligned block, then joins blocks that touch. Alignment is symmetric, so a block whose turn was
// in vain needs another one only when a block that is aligned with it has changed, and likewise for
// touching: later passes visit those alone.
class BlockJoiner {
  public:
    BlockJoiner(ComponentStore& target, MeanSize meanSize)
        : store(target),
          mean(meanSize),
          blocks(BlocksOf(target)),
          index(blocks.size(), [this](std::size_t i) { return Ordered(RectOf(*blocks[i])); }),
          rightEdges(blocks.size(), [this](std::size_t i) { return RightEdge(RectOf(*blocks[i])); }),
          upperEdges(blocks.size(), [this](std::size_t i) { return UpperEdge(RectOf(*blocks[i])); }),
          alignTurns(blocks.size(), true),
          laterAlignTurns(blocks.size(), false),
          touchTurns(blocks.size(), true),
          laterTouchTurns(blocks.size(), false) {
        for (const ComponentNode* block : blocks) boxes.push_back(RectOf(*block));
    }

    // One pass; whether it joined aligned blocks.
    bool JoinAligned() {
        bool hasJoined = false;
        for (int i = alignTurns.Next(0); i >= 0; i = alignTurns.Next(i + 1)) {
            if (blocks[i] == nullptr) continue;
            const int nearest = NearestAligned(i);
            if (nearest < 0) continue;
            Join(i, nearest);
            blocks[i]->tag = blocks[i]->firstChild->tag;
            hasJoined = true;
            laterAlignTurns.Insert(i);
            ForEachAligned(i, [&](int k, int) { (k > i ? alignTurns : laterAlignTurns).Insert(k); });
            AddTouchTurns(i, touchTurns);
        }
        StartNext(alignTurns, laterAlignTurns);
        return hasJoined;
    }

    // One pass over all pairs that touch, each block growing while it is compared with later ones.
    void JoinTouching() {
        for (int i = touchTurns.Next(0); i >= 0; i = touchTurns.Next(i + 1)) {
            if (blocks[i] == nullptr) continue;
            bool hasChanged = false;
            for (int k = index.Next(i + 1, boxes[i]); k < index.Count(); k = index.Next(k + 1, boxes[i])) {
                if (!DoMeet(boxes[i], boxes[k])) continue;
                Join(i, k);
                hasChanged = true;
            }
            if (!hasChanged) continue;
            alignTurns.Insert(i);
            ForEachAligned(i, [&](int k, int) { alignTurns.Insert(k); });
            AddTouchTurns(i, laterTouchTurns);
        }
        StartNext(touchTurns, laterTouchTurns);
    }

  private:
    static std::vector<ComponentNode*> BlocksOf(const ComponentStore& store) {
        std::vector<ComponentNode*> blocks;
        store::ForEachBlock(store, [&](ComponentNode* block) { blocks.push_back(block); });
        return blocks;
    }

    static void StartNext(PositionSet& turns, PositionSet& later) {
        std::swap(turns, later);
        later.Clear();
    }

    // After a change of block i: the turns in which it meets others.
    void AddTouchTurns(int i, PositionSet& turns) const {
        turns.Insert(i);
        for (int k = index.Next(0, boxes[i]); k < i; k = index.Next(k + 1, boxes[i])) turns.Insert(k);
    }

    // Gap between two blocks one above or beside the other, or kNotAligned.
    int AlignedGap(const Rect& a, const Rect& b) const {
        const int maxShort = kMaxShortSide * std::max(mean.w, mean.h);
        if (std::min(a.Width(), a.Height()) > maxShort && std::min(b.Width(), b.Height()) > maxShort) {
            return kNotAligned;
        }
        const Rect shared = Intersection(a, b);
        const int columns = shared.x1 - shared.x0, rows = shared.y1 - shared.y0;
        if (columns > 0) {
            return GapIfAlike({a.Width(), a.Height()}, {b.Width(), b.Height()}, columns, std::abs(rows),
                              mean.w);
        }
        if (rows > 0) {
            return GapIfAlike({a.Height(), a.Width()}, {b.Height(), b.Width()}, rows, std::abs(columns),
                              mean.h);
        }
        return kNotAligned;
    }

    // A block's side along the other block and the one across.
    struct Sides {
        int along;
        int across;
    };
    // The gap across which two blocks stand, where their sides along each other are nearly the same.
    static int GapIfAlike(Sides a, Sides b, int overlap, int gap, int meanAlong) {
        const int longer = std::max(a.along, b.along);
        const bool areAligned = overlap > kMinOverlap * std::min(a.along, b.along) &&
                                longer - overlap < kMaxExcess * meanAlong && gap < kMaxGap * longer &&
                                a.along <= kMaxAspect * a.across && b.along <= kMaxAspect * b.across;
        return areAligned ? gap : kNotAligned;
    }

    // The edges by which aligned blocks find each other. A box whose side of 65,536 pixels counts as 0 may be
    // aligned with any, so all of it stands for the edge.
    static Rect RightEdge(const Rect& box) {
        Rect edge = Ordered(box);
        if (edge.Width() != 0) edge.x0 = edge.x1;
        return edge;
    }
    static Rect UpperEdge(const Rect& box) {
        Rect edge = Ordered(box);
        if (edge.Height() != 0) edge.y0 = edge.y1;
        return edge;
    }

    // Calls visit(position, gap) for the blocks aligned with block i: first those above and below it, then
    // those beside it, each in list order, where its own shape allows any. The size rule bounds the gap: the
    // longer of two sides is below the shorter one + kMaxExcess mean sizes. By the same rule their edges are
    // less than kMaxExcess mean sizes apart.
    template <class Visit>
    void ForEachAligned(int i, Visit visit) const {
        const int w = boxes[i].Width(), h = boxes[i].Height();
        const auto visitIn = [&](const BoxIndex& edges, const Rect& area) {
            for (int k = edges.Next(0, area); k < edges.Count(); k = edges.Next(k + 1, area)) {
                if (k == i) continue;
                const int gap = AlignedGap(boxes[i], boxes[k]);
                if (gap != kNotAligned) visit(k, gap);
            }
        };
        const int excessW = kMaxExcess * mean.w, excessH = kMaxExcess * mean.h;
        if (w <= kMaxAspect * h) {
            visitIn(rightEdges, Extended(RightEdge(boxes[i]), excessW, kMaxGap * (w + excessW)));
        }
        if (h <= kMaxAspect * w) {
            visitIn(upperEdges, Extended(UpperEdge(boxes[i]), kMaxGap * (h + excessH), excessH));
        }
    }

    // The first of the nearest aligned blocks in list order, or -1.
    int NearestAligned(int i) const {
        int nearest = -1, smallest = kFarGap;
        ForEachAligned(i, [&](int k, int gap) {
            if (gap > smallest || (gap == smallest && (nearest < 0 || k > nearest))) return;
            smallest = gap;
            nearest = k;
        });
        return nearest;
    }

    // Moves the components of block k's first line into block i's and deletes block k.
    void Join(int i, int k) {
        ComponentNode* from = blocks[k]->firstChild;
        ComponentNode* into = blocks[i]->firstChild;
        while (from->firstChild != nullptr) store::MoveToParent(from, from->firstChild, into);
        boxes[i] = RectOf(*into);
        SetRect(*blocks[i], boxes[i]);
        index.Set(i, Ordered(boxes[i]));
        rightEdges.Set(i, RightEdge(boxes[i]));
        upperEdges.Set(i, UpperEdge(boxes[i]));
        store::DeleteBlock(store, blocks[k]);
        index.Remove(k);
        rightEdges.Remove(k);
        upperEdges.Remove(k);
        blocks[k] = nullptr;
    }

    ComponentStore& store;
    MeanSize mean;
    std::vector<ComponentNode*> blocks;  // in list order; null for those taken in
    std::vector<Rect> boxes;
    BoxIndex index;
    BoxIndex rightEdges;
    BoxIndex upperEdges;
    PositionSet alignTurns;  // blocks that may be aligned with another one
    PositionSet laterAlignTurns;
    PositionSet touchTurns;  // blocks that may touch a later one
    PositionSet laterTouchTurns;
};

}  // namespace

void JoinBlocks(ComponentStore& store, const MeanSize& mean) {
    BlockJoiner joiner(store, mean);
    bool goOn = true;
    while (goOn) {
        goOn = joiner.JoinAligned();
        joiner.JoinTouching();
    }
}

}  // namespace tavrix
