// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

// The two block groupings by their definitions: every pass compares all pairs.
namespace tavrix::test {

bool GroupOrientedPlainly(ComponentStore& store, int width, int height);
bool GroupAlignedPlainly(ComponentStore& store, int width, int height);

}  // namespace tavrix::test
