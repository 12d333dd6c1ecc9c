// SPDX-License-Identifier: MIT
#pragma once

namespace tavrix {

struct SineCosine {
    double sine;
    double cosine;
};

// Sine and cosine of an angle of 0 to 7 radians, each the double nearest to the true value. C libraries and
// processors differ in the last bit, and one bit can change a pixel of a turned picture: these are the same
// on every machine.
SineCosine SineCosineOf(double radians);

}  // namespace tavrix
