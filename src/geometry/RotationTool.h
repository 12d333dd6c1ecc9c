// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "geometry/Rotator.h"

namespace tavrix {

// The rotations, built around one image for one operation.
class RotationTool : public Rotator {
  public:
    explicit RotationTool(DibImage* image);
    RotationTool(const RotationTool&) = delete;
    RotationTool& operator=(const RotationTool&) = delete;

    bool RotateNodeRect(ComponentNode* node, std::uint16_t code) override;
    DibImage* RotateBlock(BlockRect block, std::uint16_t code, DibImage* target) override;
    DibImage* RotateOneBit(DibImage* image, int angle) override;
    // Maps a rectangle in place through the turn of code 1, 2 or 3; others leave it. The mapping counts
    // from width and height, so that a mapped rectangle lies one pixel further along than its pixels.
    // Sides are put in order afterwards. 16-bit arithmetic. Always true.
    virtual bool RotateRect(BlockRect* rect, std::uint16_t code);

    // Turns a whole 1-bit image upside down (mode 1) or mirrors it left to right (mode 2), keeping header
    // and colour table, and releases it. Null, with the image left alone, for another mode or when memory
    // runs out.
    DibImage* FlipOneBit(int mode, DibImage* image);

    // A quarter turn of an 8-bit image, clockwise; only for an angle whose low 16 bits are 90. Releases
    // the image in every case. Null for another angle or when memory runs out.
    DibImage* RotateGray(DibImage* image, std::int32_t angle);
    DibImage* RotateGrayQuarter(DibImage* image);

    // Turns an image about its centre by an angle in degrees, counter-clockwise unless the low 16 bits of
    // clockwise say otherwise, with bilinear interpolation on white. A negative angle turns the other
    // way; one above 90 is taken modulo 360. The result holds the whole turned picture; it has the
    // standard colour table and 400 dots per inch. Null when the angle is not finite, a side passes
    // kMaxSide or memory runs out. The image stays.
    // Gray: 8 bits; a 1-bit image gives a black one of the turned size.
    DibImage* RotateFreeGray(double angle, std::int32_t clockwise, const DibImage* image);
    // 24 bits, with sine and cosine in single precision.
    DibImage* RotateFreeColor(double angle, std::int32_t clockwise, const DibImage* image);

    DibImage* image;  // borrowed
    std::int32_t width;
    std::uint32_t rowBytes;
    std::int32_t height;
    std::uint32_t bitCount;
};

}  // namespace tavrix
