// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

#include "picture/Picture.h"

namespace host {

struct ExifFacts {
    int orientation = 1;
    Resolution resolution;
};

// Reads a block of EXIF data, from its byte-order mark on. Damaged blocks give what could be read.
ExifFacts ParseExif(std::span<const std::uint8_t> block);

}  // namespace host
