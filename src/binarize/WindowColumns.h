// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "binarize/LocalContrastKernels.h"

namespace tavrix {

// A window of five rows, white at first, for the kernels of LocalContrastKernels.
class WindowColumns {
  public:
    static constexpr int kRows = 5;
    static constexpr std::uint8_t kWhite = 255;

    explicit WindowColumns(int width)
        : room((static_cast<std::size_t>(width) + kStep - 1) / kStep * kStep),
          rows(kRows * room, kWhite),
          sums(2 + room + 2 + kAlignment / sizeof(std::uint16_t), kRows * kWhite),
          evenSquares(1 + room / 2 + 1 + kAlignment / sizeof(std::int32_t), kWhiteSquares),
          oddSquares(evenSquares) {}

    std::uint8_t* Row(int y) { return rows.data() + y % kRows * room; }
    LocalContrastKernels::Columns Columns() {
        return {Aligned(sums.data() + 2), Aligned(evenSquares.data() + 1), Aligned(oddSquares.data() + 1)};
    }

  private:
    static constexpr std::size_t kStep = LocalContrastKernels::kStep;
    static constexpr std::size_t kAlignment = 32;  // bytes; what lies across cache lines is stored slowly
    static constexpr int kWhiteSquares = LocalContrastKernels::kSquareFactor * kRows * kWhite * kWhite -
                                         LocalContrastKernels::kContrastLimit / kRows;

    template <class Sum>
    static Sum* Aligned(Sum* first) {
        return first + (0 - reinterpret_cast<std::uintptr_t>(first)) % kAlignment / sizeof(Sum);
    }

    std::size_t room;
    std::vector<std::uint8_t> rows;
    std::vector<std::uint16_t> sums;
    std::vector<std::int32_t> evenSquares, oddSquares;
};

}  // namespace tavrix
