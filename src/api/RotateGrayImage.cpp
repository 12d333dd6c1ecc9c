// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" int16_t TAVRIX_CALL RotateGrayImage(HGLOBAL handle, int32_t angle, DibRecord* result) {
    constexpr int16_t kDelivered = 1, kRefused = -1;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        const ImagePtr image = api::Wrap(handle, api::k8Bit);
        if (!image) return kRefused;
        ImageTool tool(image.get());
        return DibImage::HandOver(tool.RotateGray(angle), result) ? kDelivered : kRefused;
    });
}
