// SPDX-License-Identifier: MIT
#include "binarize/Histogram.h"

#include <cstring>

namespace tavrix {
namespace {

constexpr int kWordBytes = 8;
constexpr std::size_t kPairs = 1 << 16;
// From here on, in pixels, counting pairs repays one table, and two.
constexpr std::int64_t kPairsFrom = 1 << 18, kTwoTablesFrom = 1 << 20;

std::size_t CountersFor(std::int64_t pixels) {
    return pixels >= kTwoTablesFrom ? 2 * kPairs : pixels >= kPairsFrom ? kPairs : 0;
}

std::uint64_t WordAt(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Calls add(word, times) for a row's words, those that repeat at once: on clipped paper nearly all are the
// same, and each count would wait for the one before. Returns how many pixels that were.
template <class Add>
int CountWords(const std::uint8_t* row, int count, const Add& add) {
    std::uint64_t last = 0;
    std::uint32_t times = 0;
    int x = 0;
    for (; x + kWordBytes <= count; x += kWordBytes) {
        const std::uint64_t word = WordAt(row + x);
        if (word == last) {
            ++times;
            continue;
        }
        add(last, times);
        last = word;
        times = 1;
    }
    add(last, times);
    return x;
}

}  // namespace

PixelCounter::PixelCounter(std::int64_t pixels) : pairs(CountersFor(pixels)) {}

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
    int x = CountWords(row, count, [this](std::uint64_t word, std::uint32_t times) {
        for (int i = 0; i < kWordBytes; ++i) tables[i][word >> 8 * i & 0xFF] += times;
    });
    for (; x < count; ++x) ++tables[0][row[x]];
}

// Counting is bound by its stores: a counter for each pair of neighbours halves them. The two tables of a
// large page take turns.
void PixelCounter::AddPairs(const std::uint8_t* row, int count) {
    std::uint32_t* const even = pairs.data();
    std::uint32_t* const odd = even + (pairs.size() - kPairs);
    int x = CountWords(row, count, [=](std::uint64_t word, std::uint32_t times) {
        even[word & 0xFFFF] += times;
        odd[word >> 16 & 0xFFFF] += times;
        even[word >> 32 & 0xFFFF] += times;
        odd[word >> 48] += times;
    });
    for (; x < count; ++x) ++tables[0][row[x]];
}

void PixelCounter::AddTo(std::uint32_t* histogram) const {
    for (const auto& table : tables) {
        for (int level = 0; level < kGrayLevels; ++level) histogram[level] += table[level];
    }
    for (std::size_t row = 0; row < pairs.size(); row += kGrayLevels) {
        const std::uint32_t* partners = pairs.data() + row;
        std::uint32_t count = 0;
        for (int partner = 0; partner < kGrayLevels; ++partner) {
            count += partners[partner];
            histogram[partner] += partners[partner];
        }
        histogram[row % kPairs / kGrayLevels] += count;
    }
}

void CountPixels(const ConstPlane& plane, const Rect& rect, std::uint32_t* histogram) {
    if (rect.IsEmpty()) return;
    PixelCounter counter(rect.Area());
    for (int y = rect.y0; y <= rect.y1; ++y) counter.Add(plane.Row(y) + rect.x0, rect.Width());
    counter.AddTo(histogram);
}

}  // namespace tavrix
