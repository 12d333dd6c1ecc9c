// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "automatic/Plane.h"
#include "picture/HostImage.h"

namespace host {

// A connected area of one colour, with the areas that lie in it hanging below it. Dark areas connect
// over corners, light ones over sides only.
struct Area {
    int left, top, right, bottom;  // inclusive, row 0 at the top
    int parent;                    // the area around it, of the other colour; -1 at the picture's edge
    bool isDark;
    std::int64_t pixels;
    std::int64_t contour;  // sides of pixels that it shares with areas of the other colour
    std::int64_t edge;     // sum of the edge strengths at the ends of its runs...
    std::int64_t ends;     // ...and how many ends there are

    int Width() const { return right - left + 1; }
    int Height() const { return bottom - top + 1; }
    // Half the width of its strokes, if it consists of strokes.
    double Thickness() const { return static_cast<double>(pixels) / static_cast<double>(contour + 1); }
    double EdgeStrength() const {
        return ends == 0 ? 0 : static_cast<double>(edge) / static_cast<double>(ends);
    }
};

// All dark and light areas of a 1-bit picture, an area always after the one around it.
class AreaTree {
  public:
    struct Run {
        int start;  // first column; the run ends before the start of the next one
        int area;
    };

    // edges: the strength of the edge at every pixel, or null.
    AreaTree(const HostImage& bits, const Levels* edges);

    const std::vector<Area>& Areas() const { return areas; }
    // The runs of row y (0 at the top), dark and light by turns; one more behind the last starts at the
    // picture's width.
    const Run* Row(int y) const { return &runs[rowStarts[static_cast<std::size_t>(y)]]; }
    int Width() const { return width; }
    int Height() const { return height; }

    // The picture in which exactly the marked areas are black.
    HostImage Paint(const std::vector<bool>& isInk) const;

  private:
    void CollectRuns(const HostImage& bits);
    void Join();
    void Measure(const Levels* edges);
    int Root(int label);

    int width, height;
    std::vector<Run> runs;
    std::vector<std::size_t> rowStarts;
    std::vector<bool> rowBeginsDark;
    std::vector<int> links;  // union-find over runs
    std::vector<Area> areas;
};

}  // namespace host
