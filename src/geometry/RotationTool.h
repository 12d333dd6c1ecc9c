// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "geometry/Rotator.h"
#include "image/Rect.h"

namespace tavrix {

// The rotations, built around one image for one operation. What they give is a new image of the caller's;
// the image turned stays.
class RotationTool : public Rotator {
  public:
    explicit RotationTool(DibImage* image);
    RotationTool(const RotationTool&) = delete;
    RotationTool& operator=(const RotationTool&) = delete;

    bool RotateNodeRect(ComponentNode* node, std::uint16_t code) override;
    ImagePtr RotateBlock(const BlockRect& block, std::uint16_t code) override;
    ImagePtr RotateOneBit(const DibImage& source, int angle) override;
    // Maps a rectangle in place through the turn of code 1, 2 or 3; others leave it. The mapping counts
    // from width and height, so that a mapped rectangle lies one pixel further along than its pixels.
    // Sides are put in order afterwards. 16-bit arithmetic. Always true.
    virtual bool RotateRect(BlockRect* rect, std::uint16_t code);

    // Turns a whole 1-bit image upside down (mode 1) or mirrors it left to right (mode 2), keeping header
    // and colour table. Null for another mode or when memory runs out.
    ImagePtr FlipOneBit(int mode, const DibImage& source);

    // The 8-bit image turned a quarter clockwise; only for an angle whose low 16 bits are 90. Null for
    // another angle or when memory runs out.
    ImagePtr RotateGray(std::int32_t angle);
    ImagePtr RotateGrayQuarter();  // also writes the diagnostic copy

    // The image turned freely (FreeRotation.h): one of 1 or 8 bits, or of 24.
    ImagePtr RotateFreeGray(double angle, std::int32_t clockwise);
    ImagePtr RotateFreeColor(double angle, std::int32_t clockwise);

    DibImage* image;  // borrowed
    std::int32_t width;
    std::uint32_t rowBytes;
    std::int32_t height;
    std::uint32_t bitCount;

  private:
    Rect Mapped(const Rect& rect, std::uint16_t code) const;
};

}  // namespace tavrix
