// SPDX-License-Identifier: MIT
#include "lines/LineProfile.h"

#include <algorithm>

#include "components/ComponentTree.h"
#include "image/Ratio.h"
#include "lines/HeightHistogram.h"

namespace tavrix::lines {
namespace {

constexpr int kFewComponents = 10;  // below this a line's halves are not told apart
constexpr int kHeightRoom = 300;    // rows; taller components are counted, not measured
constexpr int kWide = 2;            // heights that a wide component is wider than
constexpr Ratio kTall{25, 10};      // widths that a tall component is taller than
// The right half's only component is no character when it is taller than this part of the image, and the
// left half has more components than these and lower than this part of the image.
constexpr Ratio kStrangerHeight{3, 4};
constexpr int kStrangersNeighbours = 3;
constexpr Ratio kPlainHeight{1, 2};

using Heights = HeightHistogram<kHeightRoom>;

}  // namespace

LineProfile::LineProfile(const ComponentNode& line, int imageHeight) {
    Heights all;
    Heights left;
    Heights right;
    const int middle = line.left + store::WidthOf(line) / 2;
    store::ForEachChild(line, [&](const ComponentNode* node) {
        ++components;
        const int nodeWidth = store::WidthOf(*node);
        const int nodeHeight = store::HeightOf(*node);
        const bool isWide = nodeWidth > kWide * nodeHeight;
        const bool isTall = nodeHeight > kTall * nodeWidth;
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
    height = all.TypicalOfAll();
    if (IsOfFewComponents()) {
        leftCount = rightCount = 0;
        leftHeight = rightHeight = height;
        return;
    }
    leftHeight = left.TypicalOfAll();
    rightHeight = right.TypicalOfAll();
    const bool isStranger = rightCount == 1 && rightHeight > kStrangerHeight * imageHeight &&
                            leftCount > kStrangersNeighbours && leftHeight < kPlainHeight * imageHeight;
    if (isStranger) rightHeight = 1;
}

int LineProfile::CharacterHeight() const {
    return std::max({height, leftHeight, rightHeight});
}

bool LineProfile::IsOfFewComponents() const {
    return components < kFewComponents;
}

}  // namespace tavrix::lines
