// SPDX-License-Identifier: MIT
#include "image/ImageTool.h"

#include "platform/Message.h"

namespace tavrix {

ImageTool::ImageTool(DibImage* imageToWorkOn) : image(imageToWorkOn) {
    if (image == nullptr) platform::ShowMessage(platform::kNoImage);
}

}  // namespace tavrix
