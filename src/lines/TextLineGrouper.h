// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "components/ComponentGrouper.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// Turns the components of an extracted store into lines of text and keeps the one that looks most like
// the main line of the card.
//
// The components that lines are built from are those of the first line of the first block. From
// BuildLines on their pixelCount is a line label, no pixel count any more. Sides that have a typical
// height H are compared with multiples of it as integers.
class TextLineGrouper : public ComponentGrouper {
  public:
    TextLineGrouper(DibImage* image, const GroupingOptions* options, std::uint32_t extra);

    // True when the store still has a block at the end. False, with nothing done, without options.
    bool Run(ComponentStore& store) override;

    // The steps of Run in their order. They may be run on any store, with or without blocks.

    // Typical height of the first line's components, without the tallest few.
    std::uint16_t EstimateTextHeight(const ComponentStore& store) const;
    // Where the type is large for the picture, deletes tall and wide marks near the right edge.
    void RemoveEdgeMarks(ComponentStore& store) const;
    // Merges components of one line whose boxes overlap by two columns and two rows.
    void MergeOverlappingComponents(ComponentStore& store) const;
    void BuildLines(ComponentStore& store) const;
    // Replaces the components of a line that stand over the same columns by one, whose pixelCount is 0.
    // They end right to left; components over no such column follow.
    void MergeByColumnProjection(ComponentStore& store, ComponentNode* line) const;
    // Cuts components that hold several characters which touch.
    void SplitWideComponents(ComponentStore& store) const;
    void RemoveSmallLines(ComponentStore& store) const;
    // Holds a tournament that deletes every line but one (unless all are to be kept).
    void SelectTrueLine(ComponentStore& store) const;
    // Deletes rules, frame edges and strangers from lines of very large type.
    void CleanTrueLine(ComponentStore& store) const;

    // The steps of BuildLines on a first line sorted by left.

    // Merges pieces of one character that stand over each other, until nothing merges.
    void MergeColumnFragments(ComponentStore& store) const;
    // Chains components from left to right and gives each chain a line of its own.
    void ChainIntoLines(ComponentStore& store) const;
    // Joins lines of the first block that overlap or continue each other, until nothing joins.
    void MergeLinePairs(ComponentStore& store) const;

    const GroupingOptions* options;
    std::uint32_t extra;
    std::uint32_t selectFlags = 0;
    std::uint32_t splitFlags = 0;

  private:
    // Moves each chain into a new line; chains that find the store full stay together in the old one.
    void SplitByLabel(ComponentStore& store, ComponentNode* block, ComponentNode* line) const;
    // Cuts one component into pieces about pieceWidth wide, at thin places and sudden changes of extent.
    void CutComponent(ComponentStore& store, ComponentNode* component, int pieceWidth) const;
};

}  // namespace tavrix
