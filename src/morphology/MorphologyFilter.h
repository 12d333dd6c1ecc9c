// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "morphology/MorphologyBase.h"

namespace tavrix {

class DibImage;

// Neighbourhood operations, in place on the whole of one image. Bits and bytes that fill up rows stay as
// they are.
class MorphologyFilter : public MorphologyBase {
  public:
    explicit MorphologyFilter(DibImage* image);
    MorphologyFilter(const MorphologyFilter&) = delete;
    MorphologyFilter& operator=(const MorphologyFilter&) = delete;

    // Gray: 0 where the Sobel gradient magnitude, truncated, is at least 127, else 255. The outer frame
    // (first and last row, column 0 and the last byte of a row) has no edges. Neighbours are read as they
    // lie in memory.
    void EdgeMap() override;
    // 1 bit: keeps black pixels whose 3 x 3 neighbourhood is all black (outside is white), then grows them
    // by 3 x 3.
    void Opening();
    // 1 bit: grows black by the element, then keeps what the element fits into; within its radius of the
    // image's edge it never fits. Both stages go to the diagnostic file. Nothing happens when memory runs
    // out.
    void Closing();
    // Gray: 3 x 3 mean, rounded down, pixels right of the image counting 0. The outer frame stays (as
    // EdgeMap has it).
    void Smooth3x3();
    // Gray: factor * centre less the eight neighbours, in single precision, limited to 0..255, truncated.
    // First and last row and column stay.
    void Sharpen(float factor);
    // 1 bit: grows black by the element.
    void Dilate();

    DibImage* image;  // borrowed
    std::int32_t width;
    std::uint32_t rowBytes;
    std::int32_t height;
    std::uint32_t bitCount;
    std::int32_t elementSize;  // side of the square structuring element
};

}  // namespace tavrix
