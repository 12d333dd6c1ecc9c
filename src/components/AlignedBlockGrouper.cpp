// SPDX-License-Identifier: MIT
#include "components/AlignedBlockGrouper.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "components/BlockGathering.h"
#include "components/BoxIndex.h"
#include "components/ComponentStore.h"

namespace tavrix {
namespace {

using store::Box;
using store::HeightOf;
using store::WidthOf;

constexpr int kStretch = 2;       // mean component sizes that a box is stretched by
constexpr int kMinBlockArea = 9;  // pixels
constexpr int kFarGap = 9999;     // pixels; gaps from here on do not join blocks

Box BoxOf(const ComponentNode& node) {
    return {node.left, node.top, node.right, node.bottom};
}

std::int16_t Clamp16(int side) {
    return static_cast<std::int16_t>(std::clamp(side, -32768, 32767));
}

bool DoTouch(const Box& a, const Box& b) {
    return std::max(a.left, b.left) <= std::min(a.right, b.right) &&
           std::max(a.bottom, b.bottom) <= std::min(a.top, b.top);
}

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
          index(blocks.size(), [this](std::size_t i) { return BoxOf(*blocks[i]); }),
          alignTurns(blocks.size(), true),
          laterAlignTurns(blocks.size(), false),
          touchTurns(blocks.size(), true),
          laterTouchTurns(blocks.size(), false) {
        for (const ComponentNode* block : blocks) boxes.push_back(BoxOf(*block));
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
                if (!DoTouch(boxes[i], boxes[k])) continue;
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
        for (ComponentNode* block = store.firstBlock; block != nullptr; block = block->next)
            blocks.push_back(block);
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

    // Gap between two blocks one above or beside the other, or -1 when they are not aligned.
    int AlignedGap(const Box& a, const Box& b) const {
        constexpr int kNotAligned = -1;
        const int aw = WidthOf(a), ah = HeightOf(a), bw = WidthOf(b), bh = HeightOf(b);
        const int maxShort = 5 * std::max(mean.w, mean.h);
        if (std::min(aw, ah) > maxShort && std::min(bw, bh) > maxShort) return kNotAligned;
        const int left = std::max(a.left, b.left), right = std::min(a.right, b.right);
        const int bottom = std::max(a.bottom, b.bottom), top = std::min(a.top, b.top);
        if (left < right) {
            const int gap = std::abs(top - bottom), overlap = right - left, longest = std::max(aw, bw);
            return 5 * overlap > 4 * std::min(aw, bw) && longest - overlap < 3 * mean.w &&
                           gap < 4 * longest && 2 * bh >= bw && 2 * ah >= aw
                       ? gap
                       : kNotAligned;
        }
        if (bottom < top) {
            const int gap = std::abs(right - left), overlap = top - bottom, longest = std::max(ah, bh);
            return 5 * overlap > 4 * std::min(ah, bh) && longest - overlap < 3 * mean.h &&
                           gap < 4 * longest && bh <= 2 * bw && ah <= 2 * aw
                       ? gap
                       : kNotAligned;
        }
        return kNotAligned;
    }

    // Calls visit(position, gap) for the blocks aligned with block i: first those above and below it, then
    // those beside it, each in list order, where its own shape allows any. The size rule bounds the gap: the
    // longer of two sides is below the shorter one + 3 mean sizes.
    template <class Visit>
    void ForEachAligned(int i, Visit visit) const {
        const int w = WidthOf(boxes[i]), h = HeightOf(boxes[i]);
        const Box box = Ordered(boxes[i]);
        const auto visitIn = [&](const Box& area) {
            for (int k = index.Next(0, area); k < index.Count(); k = index.Next(k + 1, area)) {
                if (k == i) continue;
                const int gap = AlignedGap(boxes[i], boxes[k]);
                if (gap >= 0) visit(k, gap);
            }
        };
        if (2 * h >= w) {
            const int reach = 4 * (w + 3 * mean.w);
            visitIn({box.left, Clamp16(box.top + reach), box.right, Clamp16(box.bottom - reach)});
        }
        if (h <= 2 * w) {
            const int reach = 4 * (h + 3 * mean.h);
            visitIn({Clamp16(box.left - reach), box.top, Clamp16(box.right + reach), box.bottom});
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
        blocks[i]->left = into->left;
        blocks[i]->top = into->top;
        blocks[i]->right = into->right;
        blocks[i]->bottom = into->bottom;
        boxes[i] = BoxOf(*into);
        index.Set(i, boxes[i]);
        store::DeleteBlock(store, blocks[k]);
        index.Remove(k);
        blocks[k] = nullptr;
    }

    ComponentStore& store;
    MeanSize mean;
    std::vector<ComponentNode*> blocks;  // in list order; null for those taken in
    std::vector<Box> boxes;
    BoxIndex index;
    PositionSet alignTurns;  // blocks that may be aligned with another one
    PositionSet laterAlignTurns;
    PositionSet touchTurns;  // blocks that may touch a later one
    PositionSet laterTouchTurns;
};

}  // namespace

bool AlignedBlockGrouper::Run(ComponentStore& store) try {
    const MeanSize mean = MeanComponentSize(SourceLine(store));
    const auto boxes = Smear(store, [&](const ComponentNode& node) {
        const int right = std::min(node.right + kStretch * mean.w, width - 1);
        const int top = std::min(node.top + kStretch * mean.h, height - 1);
        return SmearedBox{
            {node.left, static_cast<std::int16_t>(top), static_cast<std::int16_t>(right), node.bottom}};
    });
    const auto rule = [](const SmearedBox& a, const SmearedBox& b) { return DoOverlap(a, b); };
    if (!GatherByCentre(store, MergeOverlaps(boxes, rule))) return false;

    for (ComponentNode *block = store.firstBlock, *following; block != nullptr; block = following) {
        following = block->next;
        const ComponentNode* line = block->firstChild;
        if (line == nullptr || line->firstChild == nullptr ||
            std::int64_t{HeightOf(*block)} * WidthOf(*block) < kMinBlockArea) {
            store::DeleteBlock(store, block);
        }
    }
    BlockJoiner joiner(store, mean);
    bool goOn = true;
    while (goOn) {
        goOn = joiner.JoinAligned();
        joiner.JoinTouching();
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace tavrix
