// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "image/Plane.h"

// Text-like components of a mask (0 is foreground) of which every second column counts.
namespace tavrix {

inline constexpr int kColumnStep = 2;

// A horizontal run of foreground, in decimated columns, inclusive.
struct RunSegment {
    std::int16_t x0, x1, y;
    int next;  // index of the component's next run, -1 at the end
};

struct LabelledComponent {
    int area;               // sum of the run lengths
    int runEnds;            // two a run
    int firstRun, lastRun;  // indices into the runs, -1 when merged into another component
};

struct LabelledRuns {
    std::vector<RunSegment> runs;
    std::vector<LabelledComponent> components;  // in order of creation
};

// An accepted component, in columns and rows of the page.
struct ComponentRecord {
    int group;  // index of its row group
    int area;
    Rect box;
    int centreX, centreY;
};

// Components of the runs that touch from row to row, columns above one another. Where a run joins two
// components, the one found first takes over the other, whose runs follow its own; the column of the
// junction then carries no label for the row after it.
LabelledRuns LabelRuns(const ConstPlane& mask);

// Components of the size of text: at least five runs, 33 pixels, lower than two thirds of the page and
// narrower than half of it. Where wideToo is set, wider ones that are mostly dark in the gray page are
// accepted as well. Sorted into row groups from row 0 upward, a group's records from left to right.
std::vector<ComponentRecord> FindTextComponents(const ConstPlane& mask, const ConstPlane& gray, bool wideToo);

}  // namespace tavrix
