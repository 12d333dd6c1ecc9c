// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// The object around which an exported function runs its operation: one member for each, and what it works
// on. A new image that it returns belongs to the caller and is null when it cannot be made.
class ImageTool {
  public:
    // Borrows the image. Shows a message when it is null.
    explicit ImageTool(DibImage* image);
    virtual ~ImageTool() = default;
    ImageTool(const ImageTool&) = delete;
    ImageTool& operator=(const ImageTool&) = delete;

    // Work in place, on the whole image or on its blocks. Only the low 16 bits of an id count; an unknown
    // one shows a message and gives false, as does a method that fails or runs out of memory.
    bool BinarizeByMethod(std::uint32_t methodId);
    bool BinarizeByBlocks(std::uint32_t methodId);

    // True when the mode (1 or 2, low 16 bits) is known, even if the store took no component.
    bool ExtractComponents(ComponentStore* store, std::uint32_t mode, std::int32_t growX, std::int32_t growY);
    // False for an unknown mode or when the grouper has to give up.
    bool GroupComponents(ComponentStore* store, std::uint32_t mode);
    // Modes 0 and 1; others do nothing. Always true.
    bool FilterNoise(ComponentStore* store, std::uint32_t maxW, std::uint32_t maxH, std::uint32_t mode);
    void FindLogo(LogoRect* result, const ComponentStore* store);

    ImagePtr RotateGray(std::int32_t angle);
    // Also writes the diagnostic copy.
    ImagePtr RotateByAngle(double angle, std::int32_t clockwise);
    ImagePtr RotateBlock(const BlockRect& block, std::uint32_t code);
    // The image itself, as it is.
    DibImage* RemoveBorder() { return image; }

    // operation: an api::MorphologyOperation; others do nothing. Works in place. Always true.
    bool RunMorphology(std::uint32_t operation);

    DibImage* image = nullptr;
    const GroupingOptions* groupingOptions = nullptr;
    std::uint32_t groupingValue = 0;
};

}  // namespace tavrix
