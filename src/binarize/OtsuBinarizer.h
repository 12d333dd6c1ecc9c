// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// Otsu (1979): one threshold for the whole image, the first with the largest between-class variance.
// Values below it become black.
class OtsuBinarizer final : public Binarizer {
  public:
    explicit OtsuBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;
};

}  // namespace tavrix
