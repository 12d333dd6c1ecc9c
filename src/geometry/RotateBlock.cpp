// SPDX-License-Identifier: MIT
#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "image/ImageTool.h"

namespace tavrix {

DibImage* ImageTool::RotateBlock(BlockRect block, std::uint32_t code, DibImage* target) {
    return RotationTool(image).RotateBlock(block, static_cast<std::uint16_t>(code), target);
}

}  // namespace tavrix
