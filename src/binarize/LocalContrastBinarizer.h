// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// Compares each pixel with the mean of its 5 x 5 neighbourhood where the deviation there is at least 20
// levels, else with the Otsu threshold of the image. Either is moved by 20 levels: up where the local mean is
// below the Otsu threshold, else down. Outside the image counts as white.
class LocalContrastBinarizer final : public Binarizer {
  public:
    explicit LocalContrastBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;
    // The same with a given threshold in place of Otsu's.
    void CompareWithWindows(std::int32_t globalThreshold);
};

}  // namespace tavrix
