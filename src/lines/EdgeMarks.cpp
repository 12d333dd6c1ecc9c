// SPDX-License-Identifier: MIT
#include "lines/EdgeMarks.h"

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Ratio.h"
#include "lines/TextHeight.h"

namespace tavrix::lines {
namespace {

constexpr Ratio kLargeType{3, 10};      // of the page's height, exclusive
constexpr Ratio kMarkStart{4, 5};       // of the page's width, right of which marks begin
constexpr int kMarkSide = 2;            // text heights that a mark is taller or wider than
constexpr Ratio kFlatMark{6, 10};       // text heights that a wide mark stays below
constexpr Ratio kStrokeStart{7, 8};     // of the page's width, right of which strokes begin
constexpr Ratio kStrokeHeight{5, 4};    // text heights that a stroke is taller than
constexpr Ratio kStrokeAspect{14, 10};  // times that it is higher than wide, exclusive

}  // namespace

void RemoveEdgeMarks(ComponentStore& store, const ImageFrame& page) {
    const ComponentNode* line = store::FirstLine(store);
    if (line == nullptr) return;
    const int typical = EstimateTextHeight(store);
    if (typical <= kLargeType * page.height) return;
    store::ForEachChild(*line, [&](ComponentNode* node) {
        const int width = store::WidthOf(*node), height = store::HeightOf(*node);
        const bool isTallOrWide =
            height > kMarkSide * typical || (width > kMarkSide * typical && height < kFlatMark * typical);
        const bool isMark = node->left > kMarkStart * page.width && isTallOrWide;
        const bool isStroke = node->left > kStrokeStart * page.width && height > kStrokeHeight * typical &&
                              height > kStrokeAspect * width;
        if (isMark || isStroke) store::DeleteComponent(store, node);
    });
}

}  // namespace tavrix::lines
