// SPDX-License-Identifier: MIT
#include "api/BinarizationModes.h"
#include "api/ExportFrame.h"
#include "platform/Message.h"

using namespace tavrix;

extern "C" int32_t TAVRIX_CALL Binarized_Separate_Block(HGLOBAL handle, DibRecord* result, int32_t mode) {
    constexpr int32_t kRefused = -1;
    return Guarded(kRefused, [&] {
        if (result == nullptr) return kRefused;
        const ImagePtr image = api::Wrap(handle, api::k1Bit | api::k8Bit);
        if (!image) return kRefused;
        if (image->Is1Bit()) return image->ExportToRecord(result) ? 1 : kRefused;

        ImageTool tool(image.get());
        const api::Method* method = api::MethodOfMode(api::kBlockModes, mode);
        if (method == nullptr) {
            platform::ShowMessage(platform::kUnknownMode);
        } else if (method->byBlocks) {
            tool.BinarizeByBlocks(method->id);
        } else {
            tool.BinarizeByMethod(method->id);
        }
        return image->ExportOneBit(result, !image->Is1Bit()) ? 1 : kRefused;
    });
}
