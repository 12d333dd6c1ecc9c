// SPDX-License-Identifier: MIT
#include "lines/ColumnProfiles.h"

#include <bit>

#include "lines/InkStrips.h"

namespace tavrix::lines {
namespace {

constexpr int kCounterBits = 15;  // of a count of ink in a column: at most 32,767 rows

// Adds the ink of one strip. Counts run in parallel for all columns: plane k holds bit k of each.
void ProfileStrip(const InkStrips& strips, int x, int left, ColumnProfiles& profiles) {
    std::uint64_t planes[kCounterBits] = {};
    int lowest[kStripWidth];
    std::uint64_t seen = 0;
    for (int y = strips.FirstRow(); y <= strips.LastRow(); ++y) {
        const std::uint64_t word = strips.Word(x, y);
        std::uint64_t carry = word;
        for (int k = 0; carry != 0 && k < kCounterBits; ++k) {
            const std::uint64_t both = planes[k] & carry;
            planes[k] ^= carry;
            carry = both;
        }
        for (std::uint64_t fresh = word & ~seen; fresh != 0;) {
            const int bit = std::countl_zero(fresh);
            lowest[bit] = y;
            fresh &= ~(std::uint64_t{1} << (kStripWidth - 1 - bit));
        }
        seen |= word;
    }
    std::uint64_t pending = seen;
    for (int y = strips.LastRow(); pending != 0; --y) {
        for (std::uint64_t fresh = strips.Word(x, y) & pending; fresh != 0;) {
            const int bit = std::countl_zero(fresh);
            const std::uint64_t column = std::uint64_t{1} << (kStripWidth - 1 - bit);
            fresh &= ~column;
            pending &= ~column;
            int count = 0;
            for (int k = 0; k < kCounterBits; ++k) count |= (planes[k] & column) != 0 ? 1 << k : 0;
            const std::size_t index = static_cast<std::size_t>(x + bit - left);
            profiles.ink[index] = static_cast<std::uint16_t>(count);
            profiles.span[index] = static_cast<std::uint16_t>(y - lowest[bit] + 1);
        }
    }
}

}  // namespace

ColumnProfiles ProfileColumns(const DibImage& image, const Rect& box) {
    const std::size_t columns = static_cast<std::size_t>(box.x1 - box.x0 + 1);
    ColumnProfiles profiles{std::vector<std::uint16_t>(columns), std::vector<std::uint16_t>(columns)};
    const InkStrips strips(image, box);
    if (!strips.IsEmpty()) {
        for (int x = strips.FirstColumn(); x <= strips.LastColumn(); x += kStripWidth) {
            ProfileStrip(strips, x, box.x0, profiles);
        }
    }
    for (std::size_t i = 1; i < columns; ++i) {
        if (profiles.ink[i] == 0) profiles.span[i] = profiles.span[i - 1];
    }
    return profiles;
}

}  // namespace tavrix::lines
