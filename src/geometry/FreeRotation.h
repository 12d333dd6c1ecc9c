// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"

namespace tavrix {

// A new image that holds the whole of another one turned about its centre by an angle in degrees, with
// bilinear interpolation on white; it has the standard colour table and 400 dots per inch. The turn is
// counter-clockwise unless the low 16 bits of clockwise say otherwise. A negative angle turns the other way;
// one above 90 is taken modulo 360. 24-bit images are turned with sine and cosine in single precision; a
// 1-bit image gives a black one of the turned size. Null when the angle is not finite, a side passes
// kMaxSide or memory runs out.
[[nodiscard]] ImagePtr RotatedFreely(const DibImage& source, double angle, std::int32_t clockwise);

}  // namespace tavrix
