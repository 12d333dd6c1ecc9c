// SPDX-License-Identifier: MIT
#include "lines/ColumnFragments.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Rect.h"

namespace tavrix::lines {
namespace {

constexpr int kTinySide = 5;          // pixels; components below this in both sides stay dots
constexpr int kMaxFragmentGap = 5;    // rows between pieces of a character, exclusive
constexpr int kMinNeededOverlap = 5;  // columns; where less is needed, any overlap will do

// Whether two components, neither tiny, are pieces of one character that stand over each other.
bool AreFragments(const ComponentNode& a, const ComponentNode& b) {
    const Rect shared = Intersection(RectOf(a), RectOf(b));
    const int overlap = shared.x1 - shared.x0;
    const int gap = shared.y0 - shared.y1;
    const int half = std::min(store::WidthOf(a), store::WidthOf(b)) / 2;
    return overlap > 0 && gap < kMaxFragmentGap && overlap >= (half < kMinNeededOverlap ? 0 : half);
}

// Merges the column fragments of one line. After the first pass a pass looks only at components whose
// chances have changed: those that grew, and those before them in the list that a grown one came near.
class ColumnFragments {
  public:
    ColumnFragments(ComponentStore& storeOfLine, const ComponentNode& line)
        : store(storeOfLine),
          nodes(store::ChildrenOf(line)),
          index(nodes.size(), [this](std::size_t i) { return Ordered(RectOf(*nodes[i])); }),
          isWaiting(nodes.size()) {
        for (int i = 0; i < index.Count(); ++i) {
            const Rect box = RectOf(*nodes[static_cast<std::size_t>(i)]);
            if (box.Width() < kTinySide && box.Height() < kTinySide) {
                index.Remove(i);
            } else {
                waiting.push_back(i);
            }
        }
    }

    void MergeAll() {
        while (!waiting.empty()) {
            std::vector<int> pass;
            pass.swap(waiting);
            std::sort(pass.begin(), pass.end());
            for (const int i : pass) isWaiting[static_cast<std::size_t>(i)] = 0;
            for (const int i : pass) {
                if (nodes[static_cast<std::size_t>(i)] != nullptr) MergeInto(i);
            }
        }
    }

  private:
    // What a fragment of the node's character meets.
    static Rect Reach(const ComponentNode& node) { return Extended(RectOf(node), 0, kMaxFragmentGap); }

    void MergeInto(int current) {
        ComponentNode& node = *nodes[static_cast<std::size_t>(current)];
        bool merged = false;
        for (int i = index.Next(current + 1, Reach(node)); i < index.Count();
             i = index.Next(i + 1, Reach(node))) {
            ComponentNode*& later = nodes[static_cast<std::size_t>(i)];
            if (!AreFragments(node, *later)) continue;
            SetRect(node, Union(RectOf(node), RectOf(*later)));
            store::DeleteComponent(store, later);
            later = nullptr;
            index.Remove(i);
            merged = true;
        }
        if (!merged) return;
        index.Set(current, Ordered(RectOf(node)));
        for (int i = index.Next(0, Reach(node)); i <= current; i = index.Next(i + 1, Reach(node))) {
            if (!std::exchange(isWaiting[static_cast<std::size_t>(i)], std::uint8_t{1})) waiting.push_back(i);
        }
    }

    ComponentStore& store;
    std::vector<ComponentNode*> nodes;  // null once merged
    BoxIndex index;                     // without the tiny ones
    std::vector<int> waiting;           // for the next pass
    std::vector<std::uint8_t> isWaiting;
};

}  // namespace

void MergeColumnFragments(ComponentStore& store) {
    const ComponentNode* line = store::FirstLine(store);
    if (line != nullptr) ColumnFragments(store, *line).MergeAll();
}

}  // namespace tavrix::lines
