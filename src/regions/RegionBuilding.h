// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "regions/TextComponents.h"

namespace tavrix {

// Rectangles of a page around its text: the components of a row group, with some margin, joined over small
// gaps; then rectangles that largely overlap. In the order of the components.
std::vector<Rect> BuildRegions(const ConstPlane& page, const std::vector<ComponentRecord>& components);

}  // namespace tavrix
