// SPDX-License-Identifier: MIT
//
// Prints angle, sine and cosine in hexadecimal for every hundredth of a degree from 0 to 360 and for as many
// random angles as the argument says, in radians as free rotation computes them.
#include <cstdio>
#include <cstdlib>
#include <random>

#include "geometry/SineCosine.h"

namespace {

void Print(double degrees) {
    const double radians = degrees * 0.005555555555555556 * 3.1416159;
    const tavrix::SineCosine values = tavrix::SineCosineOf(radians);
    std::printf("%a %a %a\n", radians, values.sine, values.cosine);
}

}  // namespace

int main(int argc, char** argv) {
    for (int hundredths = 0; hundredths <= 36000; ++hundredths) Print(hundredths / 100.0);
    std::mt19937_64 random(1);
    for (long i = argc > 1 ? std::atol(argv[1]) : 0; i > 0; --i) {
        Print(static_cast<double>(random()) * 0x1p-64 * 360);
    }
}
