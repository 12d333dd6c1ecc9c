// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "image/Plane.h"

namespace tavrix {

inline constexpr int kGrayLevels = 256;

// Counts rows of pixels as they come.
class PixelCounter {
  public:
    // `pixels`: about how many there will be.
    explicit PixelCounter(std::int64_t pixels);
    void Add(const std::uint8_t* row, int count);
    // Adds what was counted to 256 counters. Once, after the last row.
    void AddTo(std::uint32_t* histogram) const;

  private:
    static constexpr int kTables = 8;

    void AddSingles(const std::uint8_t* row, int count);
    void AddPairs(const std::uint8_t* row, int count);

    std::array<std::array<std::uint32_t, kGrayLevels>, kTables> tables{};
    std::vector<std::uint32_t> pairs;  // empty where single pixels are counted
};

// Adds the pixels of a rectangle inside the plane to 256 counters.
void CountPixels(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram);

}  // namespace tavrix
