// SPDX-License-Identifier: MIT
#include "binarize/Histogram.h"

#include <cstring>

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

}  // namespace

PixelCounter::PixelCounter(std::int64_t pixels)
    : pairs(pixels >= kPairsFrom ? kGrayLevels * kGrayLevels : 0) {}

void PixelCounter::Add(const std::uint8_t* row, int count) {
    if (pairs.empty()) {
        AddSingles(row, count);
    } else {
        AddPairs(row, count);
    }
}

// Neighbouring pixels are often equal, and a counter cannot be counted up again before its last store is
// through: eight tables take turns.
void PixelCounter::AddSingles(const std::uint8_t* row, int count) {
    int x = 0;
    for (; x + kWordBytes <= count; x += kWordBytes) {
        const std::uint64_t word = WordAt(row + x);
        for (int i = 0; i < kWordBytes; ++i) ++tables[i][word >> 8 * i & 0xFF];
    }
    for (; x < count; ++x) ++tables[0][row[x]];
}

// Counting is bound by its stores: a counter for each pair of neighbours halves them.
void PixelCounter::AddPairs(const std::uint8_t* row, int count) {
    std::uint32_t* const counters = pairs.data();
    int x = 0;
    for (; x + kWordBytes <= count; x += kWordBytes) {
        const std::uint64_t word = WordAt(row + x);
        for (int i = 0; i < kWordBytes; i += 2) ++counters[word >> 8 * i & 0xFFFF];
    }
    for (; x < count; ++x) ++tables[0][row[x]];
}

void PixelCounter::AddTo(std::uint32_t* histogram) const {
    for (const auto& table : tables) {
        for (int level = 0; level < kGrayLevels; ++level) histogram[level] += table[level];
    }
    for (int level = 0; level < kGrayLevels && !pairs.empty(); ++level) {
        const std::uint32_t* partners = pairs.data() + kGrayLevels * level;
        std::uint32_t count = 0;
        for (int partner = 0; partner < kGrayLevels; ++partner) {
            count += partners[partner];
            histogram[partner] += partners[partner];
        }
        histogram[level] += count;
    }
}

void CountPixels(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    if (rect.IsEmpty()) return;
    PixelCounter counter(rect.Area());
    for (int y = rect.y0; y <= rect.y1; ++y) counter.Add(plane.Row(y) + rect.x0, rect.Width());
    counter.AddTo(histogram);
}

}  // namespace tavrix
