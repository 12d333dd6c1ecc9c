// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" uint8_t TAVRIX_CALL Extract_Eight_Connected_Components(DibRecord record, ComponentStore* store,
                                                                  int32_t mode, int32_t growX,
                                                                  int32_t growY) {
    constexpr uint8_t kRefused = 0;
    return Guarded(kRefused, [&] {
        const ImagePtr image = api::Wrap(record, api::k1Bit);
        if (!image || store == nullptr || (mode != 1 && mode != 2)) return kRefused;
        ImageTool tool(image.get());
        return uint8_t{tool.ExtractComponents(store, static_cast<uint32_t>(mode), growX, growY)};
    });
}
