// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Keeps the line of a store that looks most like the main line of the card: a tournament over all lines
// deletes every other one. Joins pieces of lines side by side first, and keeps every line, where the flags
// of GroupingOptions ask for it. The first line then has the winner's count of components as pixelCount and
// its character height as lineHeight.
void SelectTrueLine(ComponentStore& store, const ImageFrame& page, std::uint32_t selectFlags,
                    std::uint32_t groupingValue);

}  // namespace tavrix::lines
