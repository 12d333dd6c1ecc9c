// SPDX-License-Identifier: MIT
#include <algorithm>
#include <functional>
#include <queue>
#include <utility>
#include <vector>

#include "components/BoxGrid.h"
#include "components/ComponentStore.h"
#include "components/LineNodes.h"
#include "components/TextLineGrouper.h"

// Merging of components that belong to one character. The rules go through a list and merge each later
// component that fits into the current one, whose box grows. Here the grid finds the later components
// near the box, and near what it grows by, and a heap hands them out in the order of the list.
namespace tavrix {
namespace {

using Position = BoxGrid::Position;
using PositionHeap = std::priority_queue<Position, std::vector<Position>, std::greater<>>;

constexpr std::uint32_t kBlockLabel = 1002;  // pixelCount of a block whose lines were built
constexpr int kTinySide = 5;                 // components below this in both sides stay dots, pixels
constexpr int kMaxFragmentGap = 5;           // rows between pieces of a character, exclusive
constexpr int kMinNeededOverlap = 5;         // columns; where less is needed, any overlap will do

void SetBox(ComponentNode& node, const Region& box) {
    node.left = static_cast<std::int16_t>(box.left);
    node.bottom = static_cast<std::int16_t>(box.bottom);
    node.right = static_cast<std::int16_t>(box.right);
    node.top = static_cast<std::int16_t>(box.top);
}

// Calls visit for strips that together cover every place where a box can have come near `grown` that
// was not near `old`. The strips reach `margin` rows further, and include the old sides.
template <class Visit>
void ForEachGain(const Region& old, const Region& grown, int margin, Visit&& visit) {
    const int bottom = grown.bottom - margin;
    const int top = grown.top + margin;
    if (grown.left < old.left) visit(Region{grown.left, bottom, old.left, top});
    if (grown.right > old.right) visit(Region{old.right, bottom, grown.right, top});
    if (grown.bottom < old.bottom) visit(Region{grown.left, bottom, grown.right, old.bottom});
    if (grown.top > old.top) visit(Region{grown.left, old.top, grown.right, top});
}

bool Overlap(const Region& a, const Region& b) {
    return std::min(a.right, b.right) > std::max(a.left, b.left) &&
           std::min(a.top, b.top) > std::max(a.bottom, b.bottom);
}

void MergeOverlapsOf(ComponentStore& store, const ComponentNode& line) {
    const std::vector<ComponentNode*> nodes = lines::ChildrenOf(line);
    if (nodes.size() < 2) return;
    BoxGrid grid(nodes);
    std::vector<Position> queuedFor(nodes.size(), static_cast<Position>(nodes.size()));
    PositionHeap queue;
    for (Position current = 0; current < nodes.size(); ++current) {
        if (grid.IsRemoved(current)) continue;
        grid.Remove(current);
        Region box = grid.BoxOf(current);
        const auto enqueue = [&](const Region& region) {
            grid.ForEachNear(region, [&](Position later) {
                if (queuedFor[later] == current || !Overlap(box, grid.BoxOf(later))) return;
                queuedFor[later] = current;
                queue.push(later);
            });
        };
        enqueue(box);
        while (!queue.empty()) {
            const Position later = queue.top();
            queue.pop();
            const Region old = std::exchange(box, Union(box, grid.BoxOf(later)));
            nodes[current]->pixelCount += nodes[later]->pixelCount;
            store::DeleteComponent(store, nodes[later]);
            grid.Remove(later);
            ForEachGain(old, box, 0, enqueue);
        }
        SetBox(*nodes[current], box);
    }
}

std::uint16_t Side(int first, int last) {
    return static_cast<std::uint16_t>(last - first + 1);
}

// Whether two components, neither tiny, are pieces of one character that stand over each other.
bool AreFragments(const Region& a, const Region& b) {
    const int overlap = std::min(a.right, b.right) - std::max(a.left, b.left);
    const int gap = std::max(a.bottom, b.bottom) - std::min(a.top, b.top);
    const int half = std::min(Side(a.left, a.right), Side(b.left, b.right)) / 2;
    return overlap > 0 && gap < kMaxFragmentGap && overlap >= (half < kMinNeededOverlap ? 0 : half);
}

// Merges the column fragments of one line. After the first pass a pass looks only at components whose
// chance has changed: those that grew, and those before them in the list that a grown one came near.
class ColumnFragments {
  public:
    ColumnFragments(ComponentStore& storeOfLine, const ComponentNode& line)
        : store(storeOfLine),
          nodes(lines::ChildrenOf(line)),
          grid(nodes),
          queuedFor(nodes.size(), static_cast<Position>(nodes.size())),
          isWaiting(nodes.size()) {
        for (Position item = 0; item < nodes.size(); ++item) {
            if (store::WidthOf(*nodes[item]) < kTinySide && store::HeightOf(*nodes[item]) < kTinySide) {
                grid.Remove(item);
            } else {
                waiting.push_back(item);
            }
        }
    }

    void MergeAll() {
        while (!waiting.empty()) {
            std::vector<Position> pass;
            pass.swap(waiting);
            std::sort(pass.begin(), pass.end());
            for (const Position item : pass) isWaiting[item] = 0;
            for (const Position item : pass) {
                if (!grid.IsRemoved(item)) MergeInto(item);
            }
        }
    }

  private:
    static Region Reach(const Region& box) {
        return {box.left, std::min(box.bottom, box.top) - kMaxFragmentGap, box.right,
                std::max(box.bottom, box.top) + kMaxFragmentGap};
    }

    void MergeInto(Position current) {
        Region box = grid.BoxOf(current);
        Position scanned = current;
        const auto enqueue = [&](const Region& region) {
            grid.ForEachNear(region, [&](Position later) {
                if (later <= scanned || queuedFor[later] == current) return;
                queuedFor[later] = current;
                queue.push(later);
            });
        };
        enqueue(Reach(box));
        bool merged = false;
        while (!queue.empty()) {
            scanned = queue.top();
            queue.pop();
            queuedFor[scanned] = static_cast<Position>(nodes.size());
            if (!AreFragments(box, grid.BoxOf(scanned))) continue;
            const Region old = std::exchange(box, Union(box, grid.BoxOf(scanned)));
            store::DeleteComponent(store, nodes[scanned]);
            grid.Remove(scanned);
            merged = true;
            ForEachGain(old, box, kMaxFragmentGap, enqueue);
        }
        if (!merged) return;
        SetBox(*nodes[current], box);
        grid.Widen(current, box);
        Wait(current);
        grid.ForEachNear(Reach(box), [&](Position item) {
            if (item < current) Wait(item);
        });
    }

    void Wait(Position item) {
        if (std::exchange(isWaiting[item], std::uint8_t{1})) return;
        waiting.push_back(item);
    }

    ComponentStore& store;
    std::vector<ComponentNode*> nodes;
    BoxGrid grid;
    std::vector<Position> queuedFor;
    PositionHeap queue;
    std::vector<Position> waiting;  // for the next pass
    std::vector<std::uint8_t> isWaiting;
};

}  // namespace

void TextLineGrouper::MergeOverlappingComponents(ComponentStore& store) const {
    for (ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        block->pixelCount = kBlockLabel;
    }
    lines::ForEachLine(store, [&](ComponentNode* line) { MergeOverlapsOf(store, *line); });
}

void TextLineGrouper::MergeColumnFragments(ComponentStore& store) const {
    const ComponentNode* line = lines::WorkLine(store);
    if (line != nullptr) ColumnFragments(store, *line).MergeAll();
}

}  // namespace tavrix
