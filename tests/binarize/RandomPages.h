// SPDX-License-Identifier: MIT
#pragma once

#include "support/HostImage.h"

namespace tavrix::test {

// A small gray page drawn from a seed, the same everywhere: paper and ink of any tone, letter-like marks
// of any density, blocks of a third tone, dark side bands, noise from none to heavy, random padding.
// Odd seeds give small pages, down to a single pixel.
HostImage RandomPage(std::uint32_t seed);

}  // namespace tavrix::test
