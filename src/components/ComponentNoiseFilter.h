// SPDX-License-Identifier: MIT
#pragma once

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix {

class NoiseFilterBase : public ImageFrame {
  public:
    using ImageFrame::ImageFrame;
    virtual bool Run(ComponentStore& store, int maxW, int maxH) = 0;
    virtual ~NoiseFilterBase() = default;
    NoiseFilterBase(const NoiseFilterBase&) = delete;
    NoiseFilterBase& operator=(const NoiseFilterBase&) = delete;
};

// Too low or too narrow for a line of text.
bool IsSmallLine(const ComponentNode& line);

// Deletes components that are no text by their size, shape and position, from all blocks and lines of a
// store made from the image. Widths and heights are unsigned 16-bit numbers.
class ComponentNoiseFilter : public NoiseFilterBase {
  public:
    using NoiseFilterBase::NoiseFilterBase;

    // FilterBySize with the limits 2, 4, 6 .. (the arguments are not used) until the store has at most
    // growStep live nodes. Always true.
    bool Run(ComponentStore& store, int maxW, int maxH) override;
    // Keeps components larger than maxW x maxH in at least one direction that are neither thin rules nor
    // large in both directions. Deletes emptied lines and blocks. Always true.
    bool FilterBySize(ComponentStore& store, int maxW, int maxH);
    // Deletes dots, long rules and vertical frame edges, by the mean sizes in their line. Deletes emptied
    // lines and blocks.
    void FilterLineNoise(ComponentStore& store);
    // Before text lines are built: deletes small lines, slivers and large components, then blocks without
    // lines. Always true.
    bool FilterForTextLines(ComponentStore& store);
    // For binarization by text lines: as above with only components of the page's size counting as large,
    // in the first line of each block alone. Always true.
    bool FilterForBinarization(ComponentStore& store);
};

}  // namespace tavrix
