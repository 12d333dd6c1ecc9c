// SPDX-License-Identifier: MIT
#pragma once

#include "lines/MeasuredLine.h"

namespace tavrix::lines {

// Whether two lines whose rectangles overlap or touch are one line of text: the components of the one with
// fewer (b's when both have as many) look for their counterparts among the other's, and more than half of
// them vote for it. One component may have several votes.
bool AreSameLine(const MeasuredLine& a, const MeasuredLine& b);

}  // namespace tavrix::lines
