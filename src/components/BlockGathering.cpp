// SPDX-License-Identifier: MIT
#include "components/BlockGathering.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

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

bool OverlapsOrLiesIn(const Rect& a, const Rect& b) {
    return DoOverlap(a, b) || Contains(b, a);
}

// A box's turn can only have a new outcome when the box itself or a later one that it would now absorb has
// grown since its last turn. So a pass gives turns to these alone.
std::vector<SmearedBox> MergeOverlaps(std::vector<SmearedBox> boxes, MergeRule rule) {
    BoxIndex index(boxes.size(), [&](std::size_t i) { return boxes[i]; });
    std::vector<int> turns(boxes.size());
    std::iota(turns.begin(), turns.end(), 0);
    std::vector<char> isAbsorbed(boxes.size(), 0);

    while (!turns.empty()) {
        std::vector<int> grown;
        for (const int i : turns) {
            if (isAbsorbed[i]) continue;
            SmearedBox& box = boxes[i];
            bool hasGrown = false;
            for (int k = index.Next(i + 1, Ordered(box)); k < index.Count();
                 k = index.Next(k + 1, Ordered(box))) {
                if (!rule(box, boxes[k])) continue;
                box = {Union(box, boxes[k]), box.wide || boxes[k].wide};
                index.Remove(k);
                isAbsorbed[k] = 1;
                hasGrown = true;
            }
            if (!hasGrown) continue;
            index.Set(i, box);
            grown.push_back(i);
        }
        turns = grown;
        for (const int i : grown) {
            const Rect area = Ordered(boxes[i]);
            for (int k = index.Next(0, area); k < i; k = index.Next(k + 1, area)) {
                if (rule(boxes[k], boxes[i])) turns.push_back(k);
            }
        }
        std::sort(turns.begin(), turns.end());
        turns.erase(std::unique(turns.begin(), turns.end()), turns.end());
    }

    std::size_t kept = 0;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!isAbsorbed[i]) boxes[kept++] = boxes[i];
    }
    boxes.resize(kept);
    return boxes;
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
