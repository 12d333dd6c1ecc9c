// SPDX-License-Identifier: MIT
#include "lines/MeasuredLine.h"

#include <algorithm>
#include <cstddef>
#include <functional>

#include "components/ComponentTree.h"

namespace tavrix::lines {

void MeasuredLine::Measure() {
    boxes.clear();
    reach.clear();
    std::vector<int> heights;
    store::ForEachChild(*node, [&](const ComponentNode* child) {
        boxes.emplace_back(*child);
        reach.push_back(reach.empty() ? child->right : std::max<int>(reach.back(), child->right));
        heights.push_back(boxes.back().height);
    });
    if (heights.empty()) return;
    const auto quartile = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 4);
    std::nth_element(heights.begin(), quartile, heights.end(), std::greater<>());
    quartileHeight = *quartile;
}

}  // namespace tavrix::lines
