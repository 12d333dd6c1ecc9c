// SPDX-License-Identifier: MIT
#include <new>

#include "binarize/BernsenBinarizer.h"
#include "binarize/GradientBinarizer.h"
#include "binarize/IsodataBinarizer.h"
#include "binarize/LocalContrastBinarizer.h"
#include "binarize/OtsuBinarizer.h"
#include "binarize/PeakFitBinarizer.h"
#include "image/ImageTool.h"
#include "platform/Message.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/LineRegionBinarizer.h"

namespace tavrix {

bool ImageTool::BinarizeByBlocks(std::uint32_t methodId) try {
    switch (static_cast<std::uint16_t>(methodId)) {
        case 0: return OtsuBinarizer(image).BinarizeBlock();
        case 1: return PeakFitBinarizer(image).BinarizeBlock();
        case 2: return LocalContrastBinarizer(image).BinarizeBlock();
        case 3: return BernsenBinarizer(image).BinarizeBlock();
        case 4: return GradientBinarizer(image).BinarizeBlock();
        case 5: return EdgeRegionBinarizer(image).BinarizeBlock();
        case 6: return IsodataBinarizer(image).BinarizeBlock();
        case 8: return LineRegionBinarizer(image).BinarizeBlock();
        default: platform::ShowMessage(platform::kUnknownMode); return false;
    }
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace tavrix
