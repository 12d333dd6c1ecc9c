// SPDX-License-Identifier: MIT
#include "binarize/OtsuBinarizer.h"

namespace tavrix {

bool OtsuBinarizer::Binarize() {
    const std::int32_t threshold = ImageOtsuThreshold();
    ApplyMarkerPalette();
    BlackenBelow(threshold);
    return true;
}

}  // namespace tavrix
