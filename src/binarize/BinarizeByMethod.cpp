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

bool ImageTool::BinarizeByMethod(std::uint32_t methodId) try {
    switch (static_cast<std::uint16_t>(methodId)) {
        case 0: return OtsuBinarizer(image).Binarize();
        case 1: return PeakFitBinarizer(image).Binarize();
        case 2: return LocalContrastBinarizer(image).Binarize();
        case 3: return BernsenBinarizer(image).Binarize();
        case 4: return GradientBinarizer(image).Binarize();
        case 5: return EdgeRegionBinarizer(image).Binarize();
        case 6: return IsodataBinarizer(image).Binarize();
        case 8: return LineRegionBinarizer(image).Binarize();
        case 9: return EdgeRegionBinarizer(image).BinarizeSharp();
        default: platform::ShowMessage(platform::kUnknownMode); return false;
    }
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace tavrix
