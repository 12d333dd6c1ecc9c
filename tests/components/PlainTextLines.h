// SPDX-License-Identifier: MIT
#pragma once

#include "image/DibImage.h"
#include "tavrix/tavrix.h"

// The steps of text-line building that compare many pairs, as their rules are put: every pair in list
// order, every column counted. They end with the same nodes in the same slots as the fast ones.
namespace tavrix::plain {

void MergeOverlappingComponents(ComponentStore& store);
void MergeColumnFragments(ComponentStore& store);  // until no pass merges
void ChainAndSplit(ComponentStore& store);         // labels and lines, up to the boxes of the lines
void MergeByColumnProjection(ComponentStore& store, ComponentNode* line);
void MergeLinePairs(ComponentStore& store, int imageWidth);  // until no pass merges
void SplitWideComponents(ComponentStore& store, const DibImage& image);

}  // namespace tavrix::plain
