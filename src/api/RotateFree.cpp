// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" HGLOBAL TAVRIX_CALL RotateFree(HGLOBAL handle, double angle, int32_t clockwise,
                                          DibRecord* result) {
    constexpr HGLOBAL kRefused = nullptr;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        const ImagePtr image = api::Wrap(handle, api::k8Bit | api::k24Bit);
        if (!image) return kRefused;
        ImageTool tool(image.get());
        ImagePtr turned = tool.RotateByAngle(angle, clockwise);
        HGLOBAL copy = nullptr;
        if (!turned || !turned->ExportToHandle(&copy)) return kRefused;
        return DibImage::HandOver(std::move(turned), result) ? copy : kRefused;
    });
}
