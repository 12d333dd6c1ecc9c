// SPDX-License-Identifier: MIT
#include "image/DibImage.h"
#include "image/ImageTool.h"

namespace tavrix {

DibImage* ImageTool::RemoveBorder(DibImage* source) {
    return source;
}

}  // namespace tavrix
