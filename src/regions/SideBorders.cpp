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
constexpr int kEndRows = 8;        // painted at each end of the page

// Columns x0 to end - 1 of the rows y0 to endY - 1, as far as they lie inside.
void Paint(const Plane& plane, int x0, int end, int y0, int endY, std::uint8_t value) {
    x0 = std::max(x0, 0);
    end = std::min(end, plane.width);
    if (x0 >= end) return;
    for (int y = std::max(y0, 0); y < std::min(endY, plane.height); ++y) {
        std::memset(plane.Row(y) + x0, value, static_cast<std::size_t>(end - x0));
    }
}

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

SideBorders FindSideBorders(const ConstPlane& gray) {
    const int width = gray.width, depth = width / 8;
    Side left, right;
    for (int y = 2 * gray.height / 4; y < 7 * gray.height / 8; ++y) {
        const std::uint8_t* row = gray.Row(y);
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

void PaintMargins(const Plane& gray, int left, int right, std::uint8_t value) {
    const int width = gray.width, height = gray.height;
    Paint(gray, 0, left, 0, height, value);
    Paint(gray, width - right + 1, width, 0, height, value);
    Paint(gray, 0, width, 0, kEndRows, value);
    Paint(gray, 0, width, height - kEndRows, height, value);
}

void FillPixels(const Plane& plane, std::uint8_t value) {
    Paint(plane, 0, plane.width, 0, plane.height, value);
}

}  // namespace tavrix
