// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix {

class ExtractorBase : public ImageFrame {
  public:
    using ImageFrame::ImageFrame;
    virtual bool Run(ComponentStore&) { return false; }
    virtual ~ExtractorBase() = default;
    ExtractorBase(const ExtractorBase&) = delete;
    ExtractorBase& operator=(const ExtractorBase&) = delete;
};

// Finds the 8-connected components of the black pixels of a 1-bit image in one pass over its runs.
class ComponentExtractor : public ExtractorBase {
  public:
    using ExtractorBase::ExtractorBase;

    // Puts a block with one line over the whole image at the head of a freshly created store. The line
    // holds the components in the order in which the scan of rows met them first; where two meet, the one
    // with the lower first row keeps its node. Runs that would start a component in a full store are
    // dropped. False when memory runs out or the store has no room for block and line.
    bool Run(ComponentStore& store) override;
    // The same, then grows the box of every component in the store by growX columns and growY rows on each
    // side (16-bit arithmetic), clipped to its line. Always true.
    bool RunAndGrow(ComponentStore& store, std::int32_t growX, std::int32_t growY);
};

}  // namespace tavrix
