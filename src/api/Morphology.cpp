// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"
#include "api/MorphologyOperations.h"

using namespace tavrix;

extern "C" uint8_t TAVRIX_CALL Morphology(HGLOBAL handle, DibRecord* record, int32_t code) {
    constexpr uint8_t kDone = 1, kRefused = 0;
    return Guarded(kRefused, [&] {
        if (record == nullptr) return kRefused;
        ImagePtr image =
            handle != nullptr ? api::Wrap(handle, api::kAnyDepth) : api::Wrap(*record, api::kAnyDepth);
        if (!image) return kRefused;
        image = api::ToGray(std::move(image));
        if (!image) return kRefused;

        ImageTool tool(image.get());
        const auto operation = static_cast<std::uint32_t>(code);
        const bool isOneBit = image->Is1Bit();
        if (isOneBit ? api::SuitsOneBit(operation) : api::SuitsGray(operation)) tool.RunMorphology(operation);
        const bool staysGray = !isOneBit && (operation == api::kSmooth || operation == api::kSharpen);
        const bool delivered =
            staysGray ? image->ExportToRecord(record) : image->ExportOneBit(record, !isOneBit);
        return delivered ? kDone : kRefused;
    });
}
