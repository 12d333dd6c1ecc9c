// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tavrix {

// Weight of the centre in sharpening. What counts is its product with a byte in single precision, truncated.
struct SharpeningFactor {
    static constexpr int kFixedBits = 12;  // of the fixed-point number's fraction

    explicit SharpeningFactor(float value) : single(value) {
        if (!(value > 0 && value < 15)) return;
        const auto below = static_cast<std::uint16_t>(value * (1 << kFixedBits));
        for (std::uint16_t candidate = below; candidate <= below + 1; ++candidate) {
            if (GivesTheSame(candidate)) fixed = candidate;
        }
    }

    float single;
    std::uint16_t fixed = 0;  // a fixed-point number that gives the same for all bytes, 0 where there is none

  private:
    bool GivesTheSame(std::uint16_t candidate) const {
        for (int byte = 0; byte < 256; ++byte) {
            if (byte * candidate >> kFixedBits != static_cast<int>(single * static_cast<float>(byte)))
                return false;
        }
        return true;
    }
};

}  // namespace tavrix
