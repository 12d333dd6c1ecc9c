// SPDX-License-Identifier: MIT
#include "api/BinarizationModes.h"
#include "api/ExportFrame.h"
#include "platform/GlobalMemory.h"
#include "platform/Message.h"

using namespace tavrix;

extern "C" int32_t TAVRIX_CALL Binarized(HGLOBAL handle, DibRecord* result, int32_t mode) {
    constexpr int32_t kRefused = -1;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        ImagePtr image = api::Wrap(handle, api::kAnyDepth);
        if (!image) return kRefused;
        if (image->Is1Bit()) return image->ExportToRecord(result) ? 1 : kRefused;
        const api::Method* method = api::MethodOfMode(api::kWholeImageModes, mode);
        const bool needsPlane = method != nullptr && method->needsPlane;
        image = api::ToGray(std::move(image), needsPlane ? DibImage::Room::kOfPixels : DibImage::Room::kNone);
        if (!image) return kRefused;

        ImageTool tool(image.get());
        if (method != nullptr) {
            tool.BinarizeByMethod(method->id);
        } else {
            platform::ShowMessage(platform::kUnknownMode);
        }
        if (!image->ExportOneBit(result, !image->Is1Bit())) return kRefused;
        platform::Unlock(platform::HandleOf(result->header));
        return 1;
    });
}
