// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// Works on edge strength alone. Where a pixel differs from the one in the previous stored row, a quarter of
// the sum of its four neighbours' Sobel magnitudes |gx| + |gy| (low eight bits each) decides: 1 to 99 is
// white. All else is black. Outside the image values and magnitudes are 0.
class GradientBinarizer final : public Binarizer {
  public:
    explicit GradientBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;
};

}  // namespace tavrix
