// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "automatic/AreaTree.h"

namespace host {

// The ink that stands in rows of letters, level, aslant or on their side: areas of like height, on one line,
// with the contour of strokes. What is like letters in a photograph stands in no such rows: then there is
// nothing.
std::vector<Area> FindTextRows(const AreaTree& tree, const std::vector<bool>& isInk);

}  // namespace host
