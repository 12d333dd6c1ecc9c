// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <queue>
#include <utility>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "lines/LineNodes.h"
#include "lines/TextLineGrouper.h"

// Merging of components that belong to one character. The rules go through a list and merge each later
// component that fits into the current one, whose box grows on the way. An index of the boxes leads from
// one component near the box to the next.
namespace tavrix {
namespace {

using store::Box;

constexpr std::uint32_t kBlockLabel = 1002;  // pixelCount of a block whose lines were built
constexpr int kTinySide = 5;                 // pixels; components below this in both sides stay dots
constexpr int kMaxFragmentGap = 5;           // rows between pieces of a character, exclusive
constexpr int kMinNeededOverlap = 5;         // columns; where less is needed, any overlap will do

BoxIndex IndexOf(const std::vector<ComponentNode*>& nodes) {
    return BoxIndex(nodes.size(), [&](std::size_t i) { return lines::BoxOf(*nodes[i]); });
}

void WidenTo(ComponentNode& node, const ComponentNode& other) {
    lines::SetBox(node, lines::UnionOf(lines::BoxOf(node), lines::BoxOf(other)));
}

bool Overlap(const ComponentNode& a, const ComponentNode& b) {
    return std::min(a.right, b.right) > std::max(a.left, b.left) &&
           std::min(a.top, b.top) > std::max(a.bottom, b.bottom);
}

// What a box must meet to overlap a node by two columns and two rows.
Box InnerOf(const ComponentNode& node) {
    Box box = lines::BoxOf(node);
    if (node.left < node.right) ++box.left, --box.right;
    if (node.bottom < node.top) ++box.bottom, --box.top;
    return box;
}

// The bits of two 16-bit numbers in turn: numbers near each other on a page mostly give keys near each
// other (Morton, 1966).
std::uint32_t MortonKey(const ComponentNode& node) {
    const auto spread = [](std::int16_t side) {
        std::uint32_t bits = static_cast<std::uint16_t>(side + 0x8000);
        bits = (bits | bits << 8) & 0x00FF00FF;
        bits = (bits | bits << 4) & 0x0F0F0F0F;
        bits = (bits | bits << 2) & 0x33333333;
        return (bits | bits << 1) & 0x55555555;
    };
    return spread(node.left) | spread(node.bottom) << 1;
}

void MergeOverlapsOf(ComponentStore& store, const ComponentNode& line) {
    const std::vector<ComponentNode*> nodes = lines::ChildrenOf(line);
    // The index goes by place on the page: a list may be in any order.
    std::vector<std::uint32_t> keys;
    for (const ComponentNode* node : nodes) keys.push_back(MortonKey(*node));
    std::vector<int> byPlace(nodes.size());
    std::iota(byPlace.begin(), byPlace.end(), 0);
    std::sort(byPlace.begin(), byPlace.end(), [&](int a, int b) {
        return keys[static_cast<std::size_t>(a)] < keys[static_cast<std::size_t>(b)];
    });
    std::vector<int> placeOf(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
        placeOf[static_cast<std::size_t>(byPlace[i])] = static_cast<int>(i);
    BoxIndex index(nodes.size(),
                   [&](std::size_t i) { return lines::BoxOf(*nodes[static_cast<std::size_t>(byPlace[i])]); });

    // Components still in the index are neither merged nor passed. One that overlaps the current box keeps
    // doing so while it grows, and waits for its turn in list order.
    std::vector<std::uint8_t> isMerged(nodes.size());
    std::priority_queue<int, std::vector<int>, std::greater<>> waiting;
    for (std::size_t current = 0; current < nodes.size(); ++current) {
        if (isMerged[current]) continue;
        ComponentNode& node = *nodes[current];
        index.Remove(placeOf[current]);
        const auto collect = [&] {
            for (int i = index.Next(0, InnerOf(node)); i < index.Count();
                 i = index.Next(i + 1, InnerOf(node))) {
                const int later = byPlace[static_cast<std::size_t>(i)];
                if (!Overlap(node, *nodes[static_cast<std::size_t>(later)])) continue;
                waiting.push(later);
                index.Remove(i);
            }
        };
        for (collect(); !waiting.empty(); collect()) {
            const auto later = static_cast<std::size_t>(waiting.top());
            waiting.pop();
            WidenTo(node, *nodes[later]);
            node.pixelCount += nodes[later]->pixelCount;
            store::DeleteComponent(store, nodes[later]);
            isMerged[later] = 1;
        }
    }
}

// Whether two components, neither tiny, are pieces of one character that stand over each other.
bool AreFragments(const ComponentNode& a, const ComponentNode& b) {
    const int overlap = std::min(a.right, b.right) - std::max(a.left, b.left);
    const int gap = std::max(a.bottom, b.bottom) - std::min(a.top, b.top);
    const int half = std::min(store::WidthOf(a), store::WidthOf(b)) / 2;
    return overlap > 0 && gap < kMaxFragmentGap && overlap >= (half < kMinNeededOverlap ? 0 : half);
}

// Merges the column fragments of one line. After the first pass a pass looks only at components whose
// chances have changed: those that grew, and those before them in the list that a grown one came near.
class ColumnFragments {
  public:
    ColumnFragments(ComponentStore& storeOfLine, const ComponentNode& line)
        : store(storeOfLine), nodes(lines::ChildrenOf(line)), index(IndexOf(nodes)), isWaiting(nodes.size()) {
        for (int i = 0; i < index.Count(); ++i) {
            const ComponentNode& node = *nodes[static_cast<std::size_t>(i)];
            if (store::WidthOf(node) < kTinySide && store::HeightOf(node) < kTinySide) {
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
    static Box Reach(const ComponentNode& node) {
        return lines::Extended(lines::BoxOf(node), 0, kMaxFragmentGap);
    }

    void MergeInto(int current) {
        ComponentNode& node = *nodes[static_cast<std::size_t>(current)];
        bool merged = false;
        for (int i = index.Next(current + 1, Reach(node)); i < index.Count();
             i = index.Next(i + 1, Reach(node))) {
            ComponentNode*& later = nodes[static_cast<std::size_t>(i)];
            if (!AreFragments(node, *later)) continue;
            WidenTo(node, *later);
            store::DeleteComponent(store, later);
            later = nullptr;
            index.Remove(i);
            merged = true;
        }
        if (!merged) return;
        index.Set(current, lines::BoxOf(node));
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
