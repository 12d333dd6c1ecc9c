// SPDX-License-Identifier: MIT
#pragma once

#include "support/HostImage.h"

namespace tavrix::test {

// A small gray page drawn from a seed, the same everywhere: paper and ink of any tone, letter-like marks
// of any density, blocks of a third tone, dark side bands, noise from none to heavy, random padding.
// Odd seeds give small pages, down to a single pixel.
HostImage RandomPage(std::uint32_t seed);

// Seeds of pages that between them take the branches of the edge-guided method.
inline constexpr std::uint32_t kVariedPages[] = {
    22,  38,  48,  56,  92,  100,  132,  172,  182,  244,  264,  278,   316,   344,
    436, 594, 626, 640, 644, 2000, 2312, 2784, 2936, 5656, 7808, 12524, 28352, 54976,
};

}  // namespace tavrix::test
