// SPDX-License-Identifier: MIT
#include "lines/OverlapMerging.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <queue>
#include <vector>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Rect.h"

namespace tavrix::lines {
namespace {

constexpr std::uint32_t kBlockLabel = 1002;  // pixelCount of a block whose lines were built

// What a box must meet to overlap a node by two columns and two rows.
Rect InnerOf(const ComponentNode& node) {
    Rect box = RectOf(node);
    if (box.x0 < box.x1) ++box.x0, --box.x1;
    if (box.y0 < box.y1) ++box.y0, --box.y1;
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
    const std::vector<ComponentNode*> nodes = store::ChildrenOf(line);
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
    BoxIndex index(nodes.size(), [&](std::size_t i) {
        return Ordered(RectOf(*nodes[static_cast<std::size_t>(byPlace[i])]));
    });

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
                if (!DoOverlap(RectOf(node), RectOf(*nodes[static_cast<std::size_t>(later)]))) continue;
                waiting.push(later);
                index.Remove(i);
            }
        };
        for (collect(); !waiting.empty(); collect()) {
            const auto later = static_cast<std::size_t>(waiting.top());
            waiting.pop();
            SetRect(node, Union(RectOf(node), RectOf(*nodes[later])));
            node.pixelCount += nodes[later]->pixelCount;
            store::DeleteComponent(store, nodes[later]);
            isMerged[later] = 1;
        }
    }
}

}  // namespace

void MergeOverlappingComponents(ComponentStore& store) {
    store::ForEachBlock(store, [](ComponentNode* block) { block->pixelCount = kBlockLabel; });
    store::ForEachLine(store, [&](const ComponentNode* line) { MergeOverlapsOf(store, *line); });
}

}  // namespace tavrix::lines
