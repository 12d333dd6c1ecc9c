// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace tavrix::lines {

inline constexpr int kHeightWindow = 5;  // pixels of height that count as one size of type

// The index of the greatest of n counts that stand in the window of win neighbours with the greatest sum,
// the last such window and the first such count; of all counts when there are fewer than win, 0 of none.
inline int BestWindow(const std::uint16_t* counts, int n, int win) {
    if (n <= 0) return 0;
    if (n < win) return static_cast<int>(std::max_element(counts, counts + n) - counts);
    int best = 0;
    std::uint32_t bestSum = 0;
    for (int start = 0; start + win <= n; ++start) {
        std::uint32_t sum = 0;
        for (int i = start; i < start + win; ++i) sum += counts[i];
        if (sum < bestSum) continue;
        bestSum = sum;
        best = static_cast<int>(std::max_element(counts + start, counts + start + win) - counts);
    }
    return best;
}

// Counts of heights below Room; greater ones are left out.
template <int Room>
class HeightHistogram {
  public:
    void Add(int height) {
        if (height >= Room) return;
        ++counts[static_cast<std::size_t>(height)];
        smallest = std::min(smallest, height);
        largest = std::max(largest, height);
    }
    bool Empty() const { return largest < 0; }
    // The smallest height that more than `count` items reach, or the smallest one counted.
    int ReachedByMoreThan(std::uint32_t count) const {
        std::uint32_t sum = 0;
        for (int height = largest; height > smallest; --height) {
            sum += counts[static_cast<std::size_t>(height)];
            if (sum > count) return height;
        }
        return smallest;
    }
    // The height that stands for the most items, counted from the height `from` up. One pixel above the
    // fullest count, as all measures here are.
    int Typical(int from) const {
        return BestWindow(&counts[static_cast<std::size_t>(from)], largest - from + 1, kHeightWindow) + from +
               1;
    }
    // The same of all, 1 of none.
    int TypicalOfAll() const { return Empty() ? 1 : Typical(smallest); }

  private:
    std::array<std::uint16_t, Room> counts{};
    int smallest = Room;
    int largest = -1;
};

}  // namespace tavrix::lines
