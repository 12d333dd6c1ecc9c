// SPDX-License-Identifier: MIT
#include "automatic/AreaTree.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace host {
namespace {

constexpr int kWordBits = 64;

// 64 pixels of a stored row from pixel x on (a multiple of 64), the first one in the highest bit; what
// lies behind the row repeats its last bits and is cut off by the caller.
std::uint64_t WordAt(const std::uint8_t* row, std::size_t rowBytes, int x) {
    std::uint64_t word = 0;
    const std::size_t from = static_cast<std::size_t>(x) / 8;
    std::memcpy(&word, row + from, std::min<std::size_t>(8, rowBytes - from));
    return __builtin_bswap64(word);
}

}  // namespace

AreaTree::AreaTree(const HostImage& bits, const Levels* edges) : width(bits.Width()), height(bits.Height()) {
    CollectRuns(bits);
    Join();
    Measure(edges);
}

void AreaTree::CollectRuns(const HostImage& bits) {
    rowStarts.reserve(static_cast<std::size_t>(height) + 1);
    rowBeginsDark.reserve(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = bits.TopRow(y);
        rowStarts.push_back(runs.size());
        bool isLight = (row[0] & 0x80) != 0;
        rowBeginsDark.push_back(!isLight);
        runs.push_back({0, 0});
        for (int x = 0; x < width; x += kWordBits) {
            std::uint64_t word = WordAt(row, bits.RowBytes(), x);
            int at = 0;
            while (true) {
                const std::uint64_t rest = (isLight ? ~word : word) << at;
                if (rest == 0) break;
                at += std::countl_zero(rest);
                if (x + at >= width) break;
                runs.push_back({x + at, 0});
                isLight = !isLight;
            }
        }
        runs.push_back({width, -1});
    }
    rowStarts.push_back(runs.size());
}

int AreaTree::Root(int label) {
    while (links[static_cast<std::size_t>(label)] != label) {
        int& link = links[static_cast<std::size_t>(label)];
        link = links[static_cast<std::size_t>(link)];
        label = link;
    }
    return label;
}

// Connects every run with those of its colour in the row above.
void AreaTree::Join() {
    links.resize(runs.size());
    for (std::size_t i = 0; i < links.size(); ++i) links[i] = static_cast<int>(i);
    for (int y = 1; y < height; ++y) {
        std::size_t above = rowStarts[y - 1];
        const std::size_t aboveEnd = rowStarts[y] - 1;
        bool aboveIsDark = rowBeginsDark[y - 1];
        bool isDark = rowBeginsDark[y];
        for (std::size_t i = rowStarts[y]; i + 1 < rowStarts[y + 1]; ++i, isDark = !isDark) {
            const int reach = isDark ? 1 : 0;
            const int from = runs[i].start - reach;
            const int to = runs[i + 1].start + reach;  // exclusive
            // Back to the first run above that reaches the corner.
            while (above > rowStarts[y - 1] && runs[above].start > from) {
                --above;
                aboveIsDark = !aboveIsDark;
            }
            while (runs[above + 1].start <= from && above + 1 < aboveEnd) {
                ++above;
                aboveIsDark = !aboveIsDark;
            }
            for (std::size_t k = above; k < aboveEnd && runs[k].start < to; ++k) {
                const bool isSame = (((k - above) & 1) != 0) != (aboveIsDark == isDark);
                if (!isSame || runs[k + 1].start <= from) continue;
                const int a = Root(static_cast<int>(k));
                const int b = Root(static_cast<int>(i));
                if (a != b) links[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
            }
        }
    }
}

// Numbers the areas by their first pixel and adds up their runs.
void AreaTree::Measure(const Levels* edges) {
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* edgeRow = edges == nullptr ? nullptr : edges->Row(y);
        std::size_t above = y == 0 ? 0 : rowStarts[y - 1];
        bool isDark = rowBeginsDark[y];
        for (std::size_t i = rowStarts[y]; i + 1 < rowStarts[y + 1]; ++i, isDark = !isDark) {
            const int start = runs[i].start;
            const int last = runs[i + 1].start - 1;
            const int root = Root(static_cast<int>(i));
            if (y > 0) {
                while (runs[above + 1].start <= start) ++above;
            }
            if (root == static_cast<int>(i)) {
                runs[i].area = static_cast<int>(areas.size());
                areas.push_back({start, y, last, y, y == 0 ? -1 : runs[above].area, isDark, 0, 0, 0, 0});
            } else {
                runs[i].area = runs[static_cast<std::size_t>(root)].area;
            }
            Area& area = areas[static_cast<std::size_t>(runs[i].area)];
            area.left = std::min(area.left, start);
            area.right = std::max(area.right, last);
            area.bottom = y;
            area.pixels += last - start + 1;
            if (start > 0) {
                Area& before = areas[static_cast<std::size_t>(runs[i - 1].area)];
                ++area.contour;
                ++before.contour;
                if (edgeRow != nullptr) {
                    const int strength = std::max(edgeRow[start - 1], edgeRow[start]);
                    for (Area* side : {&area, &before}) {
                        side->edge += strength;
                        ++side->ends;
                    }
                }
            }
            for (std::size_t k = above; y > 0 && runs[k].start <= last; ++k) {
                const int shared = std::min(last + 1, runs[k + 1].start) - std::max(start, runs[k].start);
                Area& over = areas[static_cast<std::size_t>(runs[k].area)];
                if (over.isDark == isDark || shared <= 0) continue;
                area.contour += shared;
                over.contour += shared;
            }
        }
    }
    links = {};
}

HostImage AreaTree::Paint(const std::vector<bool>& isInk) const {
    HostImage bits(width, height, 1);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = bits.TopRow(y);
        std::memset(row, 0xFF, bits.RowBytes());
        for (const Run* run = Row(y); run->start < width; ++run) {
            if (!isInk[static_cast<std::size_t>(run->area)]) continue;
            for (int x = run->start; x < run[1].start;) {
                if (x % 8 == 0 && x + 8 <= run[1].start) {
                    row[x / 8] = 0;
                    x += 8;
                } else {
                    row[x / 8] &= static_cast<std::uint8_t>(~(0x80 >> x % 8));
                    ++x;
                }
            }
        }
    }
    return bits;
}

}  // namespace host
