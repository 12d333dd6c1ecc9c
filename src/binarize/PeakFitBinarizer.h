// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"

namespace tavrix {

// One threshold for the whole image, between the dark and the bright peak of its intensities: a tenth of
// the way from the bright peak's foot back to the dark one's. A foot is where a parabola through the flank
// that faces the other peak puts it. Values below the threshold become black.
class PeakFitBinarizer final : public Binarizer {
  public:
    explicit PeakFitBinarizer(DibImage* target) { Attach(target); }
    bool BinarizeBlock() override { return true; }
    bool Binarize() override;

    std::int32_t PeakThreshold();

    // The first of the fullest bins below 120, and from 120 on; the range's first bin when all are empty.
    static std::int32_t DarkPeak(const std::int32_t* counts);
    static std::int32_t BrightPeak(const std::int32_t* counts);
    // Walks from peak in steps of step bins, direction +1 or -1, until the counts turn convex, and gives the
    // foot of the flank; kNoFoot when there is none.
    static constexpr std::int32_t kNoFoot = -1;
    static std::int32_t PeakFoot(const std::int32_t* counts, int direction, int peak, int step);
};

}  // namespace tavrix
