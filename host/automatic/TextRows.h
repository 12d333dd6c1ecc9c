// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "automatic/AreaTree.h"

namespace host {

// Areas of like height on one line, from left to right.
using TextRow = std::vector<Area>;

// The ink that stands in rows of letters, level or aslant, with the contour of strokes. What is like letters
// in a photograph stands in no such rows: then there is nothing.
std::vector<TextRow> FindTextRows(const AreaTree& tree, const std::vector<bool>& isInk);

// The letters of these rows, or of rows on their side where there are none.
std::vector<Area> FindTextLetters(const AreaTree& tree, const std::vector<bool>& isInk);

}  // namespace host
