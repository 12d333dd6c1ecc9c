// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "automatic/AreaTree.h"

namespace host {

// Of a letter's size and shape on a page of that height.
bool HasLetterShape(const Area& area, int pageHeight);

// Whether two areas of a letter's shape may follow each other in a row: of like height, near each other and
// in the same area around them.
bool MayFollow(const Area& left, const Area& right);

// The same on a line that is about level.
bool AreNeighbours(const Area& left, const Area& right);

// How far to the right of an area its neighbour begins at most, in the area's heights.
inline constexpr double kNeighbourReach = 2;

// Whether an area has the long contour of strokes: the holes in letters, coins and the like are blobs.
bool HasStrokes(const Area& area);

// Which areas look like letters: of such a shape, with a neighbour. Light ones count as dark ones do.
std::vector<bool> FindLetters(const AreaTree& tree);

// What lies in an area's box: areas with strokes, and the height of the tallest one.
struct Contents {
    int count = 0;
    int tallest = 0;
};
Contents ContentsOf(const AreaTree& tree, const std::vector<bool>& isInk, std::size_t index);

// Whether what looks like a letter is a frame around others, or around something as tall as letters are:
// credit cards and other signs that stand in a row.
inline constexpr int kMinFramed = 3;
bool IsFrame(const AreaTree& tree, const std::vector<bool>& isInk, int letterHeight, std::size_t index);

// The middle one of the letters' heights, for those of the areas that are marked in both; 0 where there are
// fewer than kFewLetters.
int TypicalHeight(const AreaTree& tree, const std::vector<bool>& isLetter, const std::vector<bool>& isInk);

// Fewer letters than that may well be chance.
inline constexpr std::size_t kFewLetters = 4;

}  // namespace host
