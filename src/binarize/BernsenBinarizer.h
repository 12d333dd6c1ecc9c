// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// Bernsen (1986): a pixel is black when it is not above the mid-range of its 15 x 15 neighbourhood, clipped
// at the image edges. Where the contrast there is below 15 levels only pixels of value 0 are black.
class BernsenBinarizer final : public Binarizer {
  public:
    explicit BernsenBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;
};

}  // namespace tavrix
