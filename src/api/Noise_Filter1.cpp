// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" uint8_t TAVRIX_CALL Noise_Filter1(DibRecord record, ComponentStore* store, int32_t maxW,
                                             int32_t maxH, int32_t mode) {
    constexpr uint8_t kRefused = 0;
    return Guarded(kRefused, [&] {
        const ImagePtr image = api::Wrap(record, api::k1Bit);
        if (!image || store == nullptr) return kRefused;
        const auto filter = static_cast<uint16_t>(mode);
        if (filter <= 1) {
            ImageTool tool(image.get());
            tool.FilterNoise(store, static_cast<uint32_t>(maxW), static_cast<uint32_t>(maxH), filter);
        }
        return uint8_t{1};
    });
}
