// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tavrix/tavrix.h"

namespace host {

// A rectangle as people see it: inclusive columns and rows, row 0 at the top.
struct Box {
    int left, top, right, bottom;
    bool operator==(const Box&) const = default;
};

// The library's rectangles count rows from the bottom; this is the only place that turns them over.
inline Box BoxOf(int left, int top, int right, int bottom, int pageHeight) {
    return {left, pageHeight - 1 - top, right, pageHeight - 1 - bottom};
}

struct FoundComponent {
    Box box;
    std::uint32_t pixels;  // black ones; 0 where the grouping has used the field otherwise
};

struct FoundLine {
    Box box;
    std::uint32_t height;  // of its characters; 0 where not measured
    std::vector<FoundComponent> components;
};

struct FoundBlock {
    Box box;  // around its lines
    std::vector<FoundLine> lines;
};

// What was found on a page; a part that was not looked for is not there.
struct Findings {
    std::optional<std::vector<FoundBlock>> blocks;
    std::optional<std::vector<FoundLine>> lines;
    std::optional<std::optional<Box>> trueLine;
    std::optional<std::optional<Box>> logo;
    // The page has more components than the library's store holds: what lies beyond them was not seen.
    bool isTruncated = false;
};

// What was found on an enlarged picture, in pixels of the picture itself.
Findings Reduced(Findings findings, int scale);

}  // namespace host
