// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// Isodata (Ridler and Calvard 1978): one threshold for the whole image, halfway between the mean of the
// values below it and that of the others. Values below it become black.
class IsodataBinarizer final : public Binarizer {
  public:
    explicit IsodataBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;
};

}  // namespace tavrix
