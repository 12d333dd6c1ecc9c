// SPDX-License-Identifier: MIT
#include "components/AlignedBlockGrouper.h"

#include <algorithm>
#include <cstdint>

#include "components/BlockGathering.h"
#include "components/BlockJoiner.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"

namespace tavrix {
namespace {

constexpr int kStretch = 2;       // mean component sizes that a box is stretched by
constexpr int kMinBlockArea = 9;  // pixels

}  // namespace

bool AlignedBlockGrouper::Run(ComponentStore& store) {
    const MeanSize mean = MeanComponentSize(store);
    const auto boxes = Smear(store, [&](const ComponentNode& node) {
        SmearedBox box{RectOf(node)};
        box.x1 = static_cast<std::int16_t>(std::min(node.right + kStretch * mean.w, width - 1));
        box.y1 = static_cast<std::int16_t>(std::min(node.top + kStretch * mean.h, height - 1));
        return box;
    });
    const auto rule = [](const SmearedBox& a, const SmearedBox& b) { return OverlapsOrLiesIn(a, b); };
    if (!GatherByCentre(store, MergeOverlaps(boxes, rule))) return false;

    store::ForEachBlock(store, [&](ComponentNode* block) {
        const ComponentNode* line = block->firstChild;
        if (line == nullptr || line->firstChild == nullptr || RectOf(*block).Area() < kMinBlockArea) {
            store::DeleteBlock(store, block);
        }
    });
    JoinBlocks(store, mean);
    return true;
}

}  // namespace tavrix
