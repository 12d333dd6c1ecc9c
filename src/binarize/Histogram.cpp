// SPDX-License-Identifier: MIT
#include "binarize/Histogram.h"

#include <cstring>

namespace tavrix {
namespace {

// Neighbouring pixels are often equal, and a counter cannot be counted up again before its last store is
// through: eight tables take turns.
constexpr int kTables = 8;

}  // namespace

void CountPixels(const std::uint8_t* first, std::size_t rowBytes, int width, int height,
                 std::uint32_t* histogram) {
    std::uint32_t tables[kTables][kGrayLevels] = {};
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = first + rowBytes * y;
        int x = 0;
        for (; x + kTables <= width; x += kTables) {
            std::uint64_t word;
            std::memcpy(&word, row + x, sizeof word);
            for (int i = 0; i < kTables; ++i) ++tables[i][word >> 8 * i & 0xFF];
        }
        for (; x < width; ++x) ++tables[0][row[x]];
    }
    for (int level = 0; level < kGrayLevels; ++level) {
        for (const auto& table : tables) histogram[level] += table[level];
    }
}

}  // namespace tavrix
