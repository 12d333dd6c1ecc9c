// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/HostImage.h"

namespace tavrix::test {

// Gray contents that meet a threshold rule from several sides.
enum class Content { kNoise, kFlat, kFaint, kText, kExtremes, kRamp };

inline constexpr Content kContents[] = {Content::kNoise, Content::kFlat,     Content::kFaint,
                                        Content::kText,  Content::kExtremes, Content::kRamp};

inline int LevelAt(Content content, int x, int y, std::mt19937& random) {
    const int noise = static_cast<int>(random() % 256);
    switch (content) {
        case Content::kNoise: return noise;
        case Content::kFlat: return 200;
        case Content::kFaint: return 120 + noise % 20;
        case Content::kText: return (x % 11 < 3 || y % 9 == 4 ? 60 : 190) + noise % 31;
        case Content::kExtremes: return noise < 100 ? 0 : noise < 200 ? 255 : noise % 3;
        case Content::kRamp: return std::clamp(3 * x + 2 * y + noise % 5, 0, 255);
    }
    return 0;
}

// An 8-bit image with the gray colour table; the padding of its rows is noise.
inline HostImage GrayPicture(int width, int height, Content content) {
    std::mt19937 random(static_cast<unsigned>(width * 1000 + height * 10 + static_cast<int>(content)));
    HostImage image = HostImage::Random(width, height, 8, random);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.Row(y)[x] = static_cast<std::uint8_t>(LevelAt(content, x, y, random));
        }
    }
    return image;
}

}  // namespace tavrix::test
