// SPDX-License-Identifier: MIT
#include "binarize/IsodataBinarizer.h"

namespace tavrix {

bool IsodataBinarizer::Binarize() {
    ComputeHistogram(1);
    const std::int32_t threshold = IsodataThreshold(histogram);
    ApplyMarkerPalette();
    BlackenBelow(threshold);
    return true;
}

}  // namespace tavrix
