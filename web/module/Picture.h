// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "picture/HostImage.h"

namespace web {

// What a call of the page's script works on and gives: the picture, and beside it numbers and words.
struct Work {
    host::HostImage picture;
    std::vector<std::int32_t> numbers;
    std::vector<std::string> warnings;
    double confidence = -1;  // of the automatic mode, 0 to 1
};

// How pixels lie in the script's memory, rows from the top without gaps.
enum class Layout { kBits = 0, kGray = 1, kRgb = 3, kRgba = 4 };

// Fills rows of the picture from the script's pixels, transparent ones on white. A gray picture takes colour.
void PutRows(host::HostImage& picture, int first, int count, Layout layout, const std::uint8_t* pixels);
// The picture's rows as bits, with zeros after the last one, gray or opaque RGBA, by its depth.
void GetRows(const host::HostImage& picture, int first, int count, std::uint8_t* pixels);

}  // namespace web
