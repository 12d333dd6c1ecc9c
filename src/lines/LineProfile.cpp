// SPDX-License-Identifier: MIT
#include "lines/LineProfile.h"

#include <algorithm>

#include "components/ComponentStore.h"
#include "lines/HeightHistogram.h"
#include "lines/LineNodes.h"

namespace tavrix {
namespace {

constexpr int kFewComponents = 10;  // below this a line's halves are not told apart
constexpr int kHeightRoom = 300;    // rows; taller components are counted, not measured

using Heights = HeightHistogram<kHeightRoom>;

int TypicalOf(const Heights& heights) {
    return heights.Empty() ? 1 : heights.Typical(heights.Smallest());
}

}  // namespace

LineProfile::LineProfile(const ComponentNode& line, int imageHeight) {
    Heights all;
    Heights left;
    Heights right;
    const int middle = line.left + store::WidthOf(line) / 2;
    lines::ForEachComponent(line, [&](const ComponentNode* node) {
        ++components;
        const int nodeWidth = store::WidthOf(*node);
        const int nodeHeight = store::HeightOf(*node);
        const bool isWide = nodeWidth > 2 * nodeHeight;
        const bool isTall = 10 * nodeHeight > 25 * nodeWidth;
        if (isWide || isTall) return;
        all.Add(nodeHeight);
        if (node->left < middle) {
            left.Add(nodeHeight);
            ++leftCount;
        } else if (node->left > middle) {
            right.Add(nodeHeight);
            ++rightCount;
        }
    });
    height = TypicalOf(all);
    if (IsOfFewComponents()) {
        leftCount = rightCount = 0;
        leftHeight = rightHeight = height;
        return;
    }
    leftHeight = TypicalOf(left);
    rightHeight = TypicalOf(right);
    const bool isStranger =
        rightCount == 1 && 4 * rightHeight > 3 * imageHeight && leftCount > 3 && 2 * leftHeight < imageHeight;
    if (isStranger) rightHeight = 1;
}

int LineProfile::CharacterHeight() const {
    return std::max({height, leftHeight, rightHeight});
}

bool LineProfile::IsOfFewComponents() const {
    return components < kFewComponents;
}

}  // namespace tavrix
