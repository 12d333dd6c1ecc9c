// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "tavrix/tavrix.h"

namespace tavrix {

class DibImage;

// The object around which an exported function runs its operation. Each operation is defined in the
// folder of its subsystem, in a source of the operation's name.
class ImageTool {
  public:
    // Shows a message when image is null.
    explicit ImageTool(DibImage* image);
    virtual ~ImageTool() = default;
    ImageTool(const ImageTool&) = delete;
    ImageTool& operator=(const ImageTool&) = delete;

    // binarize/: work in place. Only the low 16 bits of an id count; an unknown one shows a message and
    // gives false, as does a method that fails or runs out of memory.
    bool BinarizeByMethod(std::uint32_t methodId);
    bool BinarizeByBlocks(std::uint32_t methodId);

    // components/
    bool ExtractComponents(ComponentStore* store, std::uint32_t mode, std::int32_t growX, std::int32_t growY);
    bool GroupComponents(ComponentStore* store, std::uint32_t mode);
    bool FilterNoise(ComponentStore* store, std::uint32_t maxW, std::uint32_t maxH, std::uint32_t mode);
    void FindLogo(LogoRect* result, const ComponentStore* store);

    // geometry/: the new image belongs to the caller; null when it cannot be made.
    DibImage* RotateGray(std::int32_t angle, DibImage* source);  // releases source
    DibImage* RotateByAngle(double angle, std::int32_t clockwise, DibImage* source);
    DibImage* RotateBlock(BlockRect block, std::uint32_t code, DibImage* target);
    DibImage* RemoveBorder(DibImage* source);  // source itself

    // morphology/
    bool RunMorphology(std::uint32_t operation);

    DibImage* image = nullptr;  // borrowed
    const GroupingOptions* groupingOptions = nullptr;
    std::uint32_t groupingValue = 0;
};

}  // namespace tavrix
