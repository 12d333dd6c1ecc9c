// SPDX-License-Identifier: MIT
#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "image/ImageTool.h"

namespace tavrix {

DibImage* ImageTool::RotateGray(std::int32_t angle, DibImage* source) {
    return RotationTool(image).RotateGray(source, angle);
}

}  // namespace tavrix
