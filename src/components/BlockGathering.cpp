// SPDX-License-Identifier: MIT
#include "components/BlockGathering.h"

#include <algorithm>
#include <cstdint>

#include "components/BoxIndex.h"
#include "components/ComponentStore.h"
#include "components/NodeMoves.h"

namespace tavrix {

MeanSize MeanComponentSize(const ComponentStore& store) {
    const ComponentNode* const line = store::FirstLine(store);
    std::int64_t count = 0, sumW = 0, sumH = 0;
    if (line != nullptr) {
        store::ForEachChild(*line, [&](const ComponentNode* node) {
            ++count;
            sumW += std::min(store::WidthOf(*node), store::HeightOf(*line));
            sumH += store::HeightOf(*node);
        });
    }
    if (count == 0) return {1, 1};
    return {static_cast<int>(sumW / count), static_cast<int>(sumH / count)};
}

bool GatherByCentre(ComponentStore& store, const std::vector<SmearedBox>& boxes) {
    if (boxes.empty()) return true;
    ComponentNode* const first = store.firstBlock;
    ComponentNode* const source = store::FirstLine(store);
    if (source == nullptr) return false;

    const std::vector<ComponentNode*> nodes = store::ChildrenOf(*source);
    BoxIndex centres(nodes.size(), [&](std::size_t i) {
        const auto x = static_cast<std::int16_t>(store::CentreX(*nodes[i]));
        const auto y = static_cast<std::int16_t>(store::CentreY(*nodes[i]));
        return Rect{x, y, x, y};
    });

    for (const SmearedBox& box : boxes) {
        ComponentNode* block = store::InsertBlock(store, first, first->next, {});
        if (block == nullptr) return false;
        ComponentNode* line = store::InsertLine(store, block, nullptr, nullptr, {});
        if (line == nullptr) return false;
        Rect bounds = store::kUnionStart;
        for (int i = centres.Next(0, box); i < centres.Count(); i = centres.Next(i + 1, box)) {
            bounds = Union(bounds, RectOf(*nodes[i]));
            store::MoveToParent(source, nodes[i], line);
            centres.Remove(i);
        }
        SetRect(*block, bounds);
    }
    return true;
}

}  // namespace tavrix
