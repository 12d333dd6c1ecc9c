// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" uint8_t TAVRIX_CALL Grouping(DibRecord record, ComponentStore* store,
                                        const GroupingOptions* options, int32_t mode, uint32_t extra,
                                        uint32_t) {
    constexpr uint8_t kRefused = 0;
    constexpr int32_t kTextLines = 3;  // the one mode that has options
    return Guarded(kRefused, [&] {
        const ImagePtr image = api::Wrap(record, api::k1Bit);
        if (!image || store == nullptr || (mode == kTextLines && options == nullptr)) return kRefused;
        ImageTool tool(image.get());
        if (mode == kTextLines) {
            tool.groupingOptions = options;
            tool.groupingValue = extra;
        }
        return uint8_t{tool.GroupComponents(store, static_cast<uint32_t>(mode))};
    });
}
