// SPDX-License-Identifier: MIT
#include "regions/SideBorders.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavrix {
namespace {

constexpr int kJump = 20;          // gray levels between neighbours, exceeded at an edge
constexpr int kSteady = 20;        // columns that the edge may wander from row to row
constexpr int kMaxMisses = 5;      // rows without a fitting edge
constexpr int kWidestBorder = 50;  // pixels

// The edge of one side, row by row.
struct Side {
    std::int64_t sumX = 0, count = 0;
    int previous = 0, misses = 0;

    void AddRow(bool found, int x) {
        if (!found) {
            ++misses;
            return;
        }
        const int wandered = count == 0 ? 0 : std::abs(previous - x);
        if (wandered > kSteady) ++misses;
        if (wandered >= kSteady) return;
        sumX += x;
        ++count;
        previous = x;
    }
    bool Valid() const { return misses <= kMaxMisses; }
    bool HasFallback() const { return !Valid() && count > 0; }
    int MeanX() const { return static_cast<int>(sumX / count); }
};

bool Jumps(const std::uint8_t* row, int a, int b) {
    return std::abs(row[a] - row[b]) > kJump;
}

}  // namespace

SideBorders FindSideBorders(const PageShape& page, const std::uint8_t* gray) {
    const int width = page.width, depth = width / 8;
    Side left, right;
    for (int y = 2 * page.height / 4; y < 7 * page.height / 8; ++y) {
        const std::uint8_t* row = gray + page.Offset(y);
        int x = 0;
        while (x < depth && !Jumps(row, x, x + 1)) ++x;
        left.AddRow(x < depth, x);
        x = width - 1;
        while (x > width - depth && !Jumps(row, x, x - 1)) --x;
        right.AddRow(x > width - depth, x);
    }

    SideBorders borders{0, 0};
    if (left.Valid() && left.count > 0) borders.left = left.MeanX();
    if (right.Valid() && right.count > 0) {
        borders.right = static_cast<int>((width * right.count - right.sumX) / right.count);
    }
    if (borders.left == 0 && borders.right == 0) {
        if (right.HasFallback() && width - right.MeanX() < kWidestBorder) {
            borders.right = width - right.MeanX();
        } else if (left.HasFallback() && left.MeanX() < kWidestBorder) {
            borders.left = left.MeanX();
        }
    } else if (borders.right > kWidestBorder) {
        borders.right = 0;
    } else if (borders.left > kWidestBorder) {
        borders.left = 0;
    }
    return borders;
}

void PaintColumns(const PageShape& page, std::uint8_t* gray, int x0, int count, std::uint8_t value) {
    const int first = std::max(x0, 0), end = std::min(x0 + count, page.width);
    if (first >= end) return;
    for (int y = 0; y < page.height; ++y) {
        std::memset(gray + page.Offset(y) + first, value, static_cast<std::size_t>(end - first));
    }
}

void PaintRows(const PageShape& page, std::uint8_t* gray, int y0, int count, std::uint8_t value) {
    const int end = std::min(y0 + count, page.height);
    for (int y = std::max(y0, 0); y < end; ++y) {
        std::memset(gray + page.Offset(y), value, static_cast<std::size_t>(page.width));
    }
}

}  // namespace tavrix
