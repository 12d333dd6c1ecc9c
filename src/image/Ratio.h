// SPDX-License-Identifier: MIT
#pragma once

#include <compare>

namespace tavrix {

// A multiple or a share, as a fraction: a rule such as `gap > kWideGap * height` is then decided in whole
// numbers and rounds nothing.
struct Ratio {
    int numerator;
    int denominator;
};

// So many times a number, undivided.
struct Multiple {
    int numerator;
    int denominator;

    friend constexpr std::strong_ordering operator<=>(int number, Multiple multiple) {
        return number * multiple.denominator <=> multiple.numerator;
    }
};

constexpr Multiple operator*(Ratio ratio, int number) {
    return {ratio.numerator * number, ratio.denominator};
}

}  // namespace tavrix
