// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace host {

// A grid of values, the top row first, without gaps.
template <class T>
class Plane {
  public:
    Plane() = default;
    Plane(int columns, int rows)
        : width(columns),
          height(rows),
          values(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

    int Width() const { return width; }
    int Height() const { return height; }
    T* Row(int y) { return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
    const T* Row(int y) const {
        return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }

  private:
    int width = 0, height = 0;
    std::vector<T> values;
};

using Levels = Plane<std::uint8_t>;

}  // namespace host
