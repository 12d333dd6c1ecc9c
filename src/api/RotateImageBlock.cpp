// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" int16_t TAVRIX_CALL RotateImageBlock(DibRecord source, BlockRect block, int32_t code,
                                                DibRecord* result) {
    constexpr int16_t kDelivered = 1, kRefused = -1;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        const ImagePtr image = api::Wrap(source, api::k1Bit);
        if (!image) return kRefused;
        ImageTool tool(image.get());
        ImagePtr turned = tool.RotateBlock(block, static_cast<uint32_t>(code));
        return DibImage::HandOver(std::move(turned), result) ? kDelivered : kRefused;
    });
}
