// SPDX-License-Identifier: MIT
#pragma once

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Where the type is large for the page, deletes tall and wide marks near its right edge from the store's
// first line.
void RemoveEdgeMarks(ComponentStore& store, const ImageFrame& page);

}  // namespace tavrix::lines
