// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

namespace {

enum Operation : std::uint32_t { kEdgeMap, kOpening, kClosing, kSmooth, kSharpen, kDilate };

bool SuitsOneBit(std::uint32_t operation) {
    return operation == kOpening || operation == kClosing || operation == kDilate;
}

bool SuitsGray(std::uint32_t operation) {
    return operation == kEdgeMap || operation == kSmooth || operation == kSharpen;
}

}  // namespace

extern "C" uint8_t TAVRIX_CALL Morphology(HGLOBAL handle, DibRecord* record, int32_t code) {
    constexpr uint8_t kDone = 1, kRefused = 0;
    return api::Guarded(kRefused, [&] {
        if (record == nullptr) return kRefused;
        api::ImagePtr image =
            handle != nullptr ? api::Wrap(handle, api::kAnyDepth) : api::Wrap(*record, api::kAnyDepth);
        if (!image) return kRefused;
        image = api::ToGray(std::move(image));
        if (!image) return kRefused;

        ImageTool tool(image.get());
        const auto operation = static_cast<std::uint32_t>(code);
        const bool isOneBit = image->Is1Bit();
        if (isOneBit ? SuitsOneBit(operation) : SuitsGray(operation)) tool.RunMorphology(operation);
        const bool staysGray = !isOneBit && (operation == kSmooth || operation == kSharpen);
        const bool delivered =
            staysGray ? image->ExportToRecord(record) : image->ExportOneBit(record, !isOneBit);
        return delivered ? kDone : kRefused;
    });
}
