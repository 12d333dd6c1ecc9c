// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix {

// Whether text runs along the rows of a page: components of one line agree less in their columns than in
// their rows.
bool IsTextHorizontal(const ComponentStore& store);

}  // namespace tavrix
