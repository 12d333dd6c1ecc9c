// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::lines {

// What a line of text looks like. Typical heights are those of components that are neither wide nor tall
// for their other side, 1 where there is none. The halves of a line of few components count nothing and
// have the height of the whole.
struct LineProfile {
    // imageHeight: of the image that the line stands in, in rows.
    LineProfile(const ComponentNode& line, int imageHeight);
    // The greatest of the three typical heights.
    int CharacterHeight() const;
    bool IsOfFewComponents() const;

    int components = 0;
    int leftCount = 0;  // components that a half's height is measured from
    int rightCount = 0;
    int height = 1;
    int leftHeight = 1;
    int rightHeight = 1;
};

}  // namespace tavrix::lines
