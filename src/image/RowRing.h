// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavrix {

// Rows of bytes that take turns, zeroed at first: row y stays until row y + size comes.
class RowRing {
  public:
    RowRing(int ringSize, std::size_t rowBytes)
        : size(ringSize), stride(rowBytes), bytes(static_cast<std::size_t>(ringSize) * rowBytes) {}
    void Fill(std::uint8_t value) { std::fill(bytes.begin(), bytes.end(), value); }
    // y may be negative, down to -size.
    std::uint8_t* Row(int y) { return bytes.data() + static_cast<std::size_t>((y + size) % size) * stride; }

  private:
    int size;
    std::size_t stride;
    std::vector<std::uint8_t> bytes;
};

}  // namespace tavrix
