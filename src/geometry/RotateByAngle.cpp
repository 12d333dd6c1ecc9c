// SPDX-License-Identifier: MIT
#include "geometry/RotationTool.h"
#include "image/DibImage.h"
#include "image/ImageTool.h"
#include "platform/OutputFile.h"

namespace tavrix {

DibImage* ImageTool::RotateByAngle(double angle, std::int32_t clockwise, DibImage* source) {
    RotationTool tool(source);
    DibImage* turned = source->Is24Bit() ? tool.RotateFreeColor(angle, clockwise, source)
                                         : tool.RotateFreeGray(angle, clockwise, source);
    if (turned != nullptr) turned->WriteBmp(platform::kDebugDumpPath);
    return turned;
}

}  // namespace tavrix
