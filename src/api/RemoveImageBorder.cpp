// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" uint8_t TAVRIX_CALL RemoveImageBorder(HGLOBAL handle, DibRecord* result) {
    constexpr uint8_t kDelivered = 1, kRefused = 0;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        const ImagePtr image = api::Wrap(handle, api::kAnyDepth);
        if (!image) return kRefused;
        ImageTool tool(image.get());
        return tool.RemoveBorder()->ExportToRecord(result) ? kDelivered : kRefused;
    });
}
