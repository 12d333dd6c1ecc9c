// SPDX-License-Identifier: MIT
#include <algorithm>

#include "api/ExportFrame.h"
#include "geometry/WhiteSurround.h"
#include "image/HostBlock.h"
#include "platform/GlobalMemory.h"

using namespace tavrix;

namespace {

constexpr int kMarginStep = 5;        // pixels
constexpr int kComfortableSide = 32;  // a smaller side calls for a wider margin

}  // namespace

extern "C" int16_t TAVRIX_CALL CopyImgWithWhiteSurr(DibRecord* image, int32_t* marginSteps) {
    constexpr int16_t kDone = 0;
    return Guarded(kDone, [&] {
        if (image == nullptr) return kDone;
        const ImagePtr old = api::Wrap(*image, api::k1Bit);
        if (!old) return kDone;
        const HGLOBAL block = platform::HandleOf(image->header);
        if (platform::SizeOf(block) < BlockBytesOf(1, old->header->biSizeImage)) return kDone;
        const int smallerSide = std::min(old->Width(), old->Height());
        const bool isSmall = smallerSide < kComfortableSide;
        if (isSmall && marginSteps == nullptr) return kDone;
        const int steps = isSmall ? (kComfortableSide - smallerSide) / kMarginStep + 1 : 1;
        const int margin = steps * kMarginStep;
        if (std::max(old->Width(), old->Height()) + 2 * margin > kMaxSide) return kDone;

        DibRecord surrounded{};
        if (!SurroundWithWhite(*old, margin, &surrounded)) return kDone;
        if (isSmall) *marginSteps = steps;
        FreeHostBlock(block);
        *image = surrounded;
        return kDone;
    });
}
