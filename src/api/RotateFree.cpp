// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"
#include "platform/GlobalMemory.h"

using namespace tavrix;

extern "C" HGLOBAL TAVRIX_CALL RotateFree(HGLOBAL handle, double angle, int32_t clockwise,
                                          DibRecord* result) {
    constexpr HGLOBAL kRefused = nullptr;
    return api::Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        api::ImagePtr image = api::Wrap(handle, api::k8Bit | api::k24Bit);
        if (!image) return kRefused;
        ImageTool tool(image.get());
        const api::ImagePtr turned(tool.RotateByAngle(angle, clockwise, image.get()));
        image.reset();
        HGLOBAL copy = nullptr;
        if (!turned || !turned->ExportToHandle(&copy)) return kRefused;
        if (!turned->ExportToRecord(result)) {
            platform::Unlock(copy);
            platform::Free(copy);
            return kRefused;
        }
        return copy;
    });
}
