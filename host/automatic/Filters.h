// SPDX-License-Identifier: MIT
#pragma once

#include "automatic/Plane.h"

// Filters of the automatic mode. Beyond its edge a picture goes on as at its edge. They count in whole
// numbers, so that every machine gives the same.
namespace host {

// Gaussian, by its standard deviation in pixels (at most 8).
Levels Smoothed(const Levels& picture, double deviation);

// The darkest and the lightest of 3 x 3 neighbours, row by row; at the ends of a row those that are there.
class RowExtremes {
  public:
    explicit RowExtremes(int width);
    void Find(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
              std::uint8_t* darkest, std::uint8_t* lightest);

  private:
    std::vector<std::uint8_t> low, high;  // of three rows; repeated at both ends
};

// The same of a whole picture.
struct Extremes {
    Levels darkest, lightest;
};
Extremes ExtremesOf(const Levels& picture);

// Adds to every value of a plane of the same size the mean of the square around it, times a share. side is
// odd. The values are whole and their sums below 2^53, so that those are exact.
void AddMeans(const Plane<double>& values, int side, double share, Plane<double>& to);

}  // namespace host
