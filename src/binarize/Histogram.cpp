// SPDX-License-Identifier: MIT
#include "binarize/Histogram.h"

#include <cstring>
#include <vector>

namespace tavrix {
namespace {

constexpr int kWordBytes = 8;
// From here on, in pixels, counting pairs repays its table of 65,536 counters.
constexpr std::int64_t kPairsFrom = 1 << 18;

std::uint64_t WordAt(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Neighbouring pixels are often equal, and a counter cannot be counted up again before its last store is
// through: eight tables take turns.
void CountSingles(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    const int width = rect.Width();
    std::uint32_t tables[kWordBytes][kGrayLevels] = {};
    for (int y = rect.y0; y <= rect.y1; ++y) {
        const std::uint8_t* row = plane.Row(y) + rect.x0;
        int x = 0;
        for (; x + kWordBytes <= width; x += kWordBytes) {
            const std::uint64_t word = WordAt(row + x);
            for (int i = 0; i < kWordBytes; ++i) ++tables[i][word >> 8 * i & 0xFF];
        }
        for (; x < width; ++x) ++tables[0][row[x]];
    }
    for (int level = 0; level < kGrayLevels; ++level) {
        for (const auto& table : tables) histogram[level] += table[level];
    }
}

// Counting is bound by its stores: a counter for each pair of neighbours halves them.
void CountPairs(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    const int width = rect.Width();
    std::vector<std::uint32_t> pairs(kGrayLevels * kGrayLevels);
    for (int y = rect.y0; y <= rect.y1; ++y) {
        const std::uint8_t* row = plane.Row(y) + rect.x0;
        int x = 0;
        for (; x + kWordBytes <= width; x += kWordBytes) {
            const std::uint64_t word = WordAt(row + x);
            for (int i = 0; i < kWordBytes; i += 2) ++pairs[word >> 8 * i & 0xFFFF];
        }
        for (; x < width; ++x) ++histogram[row[x]];
    }
    for (int level = 0; level < kGrayLevels; ++level) {
        const std::uint32_t* partners = pairs.data() + kGrayLevels * level;
        std::uint32_t count = 0;
        for (int partner = 0; partner < kGrayLevels; ++partner) {
            count += partners[partner];
            histogram[partner] += partners[partner];
        }
        histogram[level] += count;
    }
}

}  // namespace

void CountPixels(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    if (rect.IsEmpty()) return;
    (rect.Area() >= kPairsFrom ? CountPairs : CountSingles)(plane, rect, histogram);
}

}  // namespace tavrix
