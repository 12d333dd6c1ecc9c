// SPDX-License-Identifier: MIT
#include "components/OrientedBlockGrouper.h"

#include <algorithm>
#include <cstdint>

#include "components/BlockGathering.h"
#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/TextDirection.h"

namespace tavrix {
namespace {

// Stretching, in mean component sizes along and across the text
constexpr float kHorizontalStretch[] = {1.6f, 0.3f};  // to the right, to higher rows
constexpr float kVerticalStretch[] = {0.2f, 1.5f};
constexpr double kWideShare = 0.5;         // of the page's width; a wider box is marked
constexpr double kMinOverlapShare = 0.05;  // of the smaller box, exclusive
constexpr int kPageMargin = 50;            // pixels that a line of the page's size is short of it at most

// Boxes that share enough of the smaller one; of a wide one only what one holds of the other counts.
bool OverlapsByRatio(const SmearedBox& a, const SmearedBox& b) {
    if (a.wide || b.wide) return Contains(b, a) || Contains(a, b);
    if (!OverlapsOrLiesIn(a, b)) return false;
    const Rect shared = Intersection(a, b);
    const double area = double(shared.y1 - shared.y0 + 1) * (shared.x1 - shared.x0 + 1);
    const std::int64_t smaller = std::min(a.Area(), b.Area());
    if (smaller == 0) return area > 0;  // a side of 65,536 pixels, or of none, counts as 0
    return area / static_cast<double>(smaller) > kMinOverlapShare;
}

}  // namespace

bool OrientedBlockGrouper::Run(ComponentStore& store) {
    const MeanSize mean = MeanComponentSize(store);
    const float* stretch = IsTextHorizontal(store) ? kHorizontalStretch : kVerticalStretch;
    const double stepX = mean.w * double{stretch[0]}, stepY = mean.h * double{stretch[1]};
    const auto boxes = Smear(store, [&](const ComponentNode& node) {
        SmearedBox box{RectOf(node)};
        box.x1 = static_cast<std::int16_t>(std::min<double>(node.right + stepX, width - 1));
        box.y1 = static_cast<std::int16_t>(std::min<double>(node.top + stepY, height - 1));
        box.wide = box.Width() > static_cast<int>(width * kWideShare);
        return box;
    });
    if (!GatherByCentre(store, MergeOverlaps(boxes, OverlapsByRatio))) return false;

    store::ForEachLine(store, [&](ComponentNode* line) {
        if (store::WidthOf(*line) > width - kPageMargin && store::HeightOf(*line) > height - kPageMargin) {
            store::DeleteLine(store, line);
        }
    });
    return true;
}

}  // namespace tavrix
