// SPDX-License-Identifier: MIT
#include "lines/TextLineGrouper.h"

#include "components/ComponentNoiseFilter.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"
#include "lines/CharacterCutting.h"
#include "lines/ColumnFragments.h"
#include "lines/ColumnProjection.h"
#include "lines/EdgeMarks.h"
#include "lines/LineChains.h"
#include "lines/LineCleaning.h"
#include "lines/LinePairs.h"
#include "lines/OverlapMerging.h"
#include "lines/TrueLineSelection.h"

namespace tavrix {
namespace {

constexpr std::uint32_t kNoSplitFlags = 0x40 | 0x80;

// Makes lines of the components of the store's first line.
void BuildLines(ComponentStore& store, const ImageFrame& page) {
    ComponentNode* const line = store::FirstLine(store);
    if (line == nullptr) return;
    store::SortChildren(line);
    lines::MergeColumnFragments(store);
    lines::RemoveEdgeMarks(store, page);
    lines::ChainIntoLines(store);
    for (ComponentNode* chain : store::ChildrenOf(*store.firstBlock)) {
        lines::MergeByColumnProjection(store, chain);
        store::SortChildren(chain);
    }
    lines::MergeLinePairs(store, page.width);
}

void RemoveSmallLines(ComponentStore& store) {
    store::ForEachBlock(store, [&](ComponentNode* block) {
        store::ForEachChild(*block, [&](ComponentNode* line) {
            if (IsSmallLine(*line)) store::DeleteLine(store, line);
        });
        if (block->firstChild == nullptr) store::DeleteBlock(store, block);
    });
}

}  // namespace

TextLineGrouper::TextLineGrouper(DibImage* source, const GroupingOptions* groupingOptions,
                                 std::uint32_t groupingValue)
    : ComponentGrouper(source), options(groupingOptions), extra(groupingValue) {}

bool TextLineGrouper::Run(ComponentStore& store) {
    if (options == nullptr) return false;
    selectFlags = options->selectFlags;
    splitFlags = options->splitFlags;
    const auto isEmpty = [&] { return store.firstBlock == nullptr; };

    ComponentNoiseFilter(image).FilterForTextLines(store);
    lines::RemoveEdgeMarks(store, *this);
    if (isEmpty()) return false;
    lines::MergeOverlappingComponents(store);
    BuildLines(store, *this);
    if (isEmpty()) return false;
    store::ForEachLine(store, [&](ComponentNode* line) { lines::MergeByColumnProjection(store, line); });
    if ((splitFlags & ~kNoSplitFlags) != 0) lines::SplitWideComponents(store, *image);
    RemoveSmallLines(store);
    if (isEmpty()) return false;
    lines::SelectTrueLine(store, *this, selectFlags, extra);
    lines::CleanTrueLine(store, *this);
    return !isEmpty();
}

}  // namespace tavrix
