// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "components/ComponentGrouper.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// Turns the components of an extracted store into lines of text and keeps the one that looks most like the
// main line of the card. Each step is a unit of this folder; heights of type are compared in whole rows.
//
// The components that lines are built from are those of the first line of the first block. From the chaining
// on their pixelCount is a line label, no pixel count any more.
class TextLineGrouper : public ComponentGrouper {
  public:
    // Borrows image and options.
    TextLineGrouper(DibImage* image, const GroupingOptions* options, std::uint32_t extra);

    // True when the store still has a block at the end. False, with nothing done, without options. Throws
    // std::bad_alloc, with a store that is whole but half grouped.
    bool Run(ComponentStore& store) override;

    const GroupingOptions* options;
    std::uint32_t extra;
    std::uint32_t selectFlags = 0;
    std::uint32_t splitFlags = 0;
};

}  // namespace tavrix
