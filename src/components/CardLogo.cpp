// SPDX-License-Identifier: MIT
#include "components/CardLogo.h"

#include <cstdint>

#include "components/ComponentTree.h"

namespace tavrix {
namespace {

constexpr int kMinSide = 6;                  // pixels; smaller components do not count
constexpr double kMaxSingleLineShare = 0.5;  // of the image's sides, for a line with one such component
constexpr double kMaxWidthShare = 0.6;       // of the image's width, exclusive, for the largest component

struct Largest {
    std::int64_t area = 0;
    int width = 0;
    int count = 0;
};

Largest LargestOf(const ComponentNode& line) {
    Largest largest;
    store::ForEachChild(line, [&](const ComponentNode* node) {
        const Rect box = RectOf(*node);
        if (box.Width() < kMinSide || box.Height() < kMinSide) return;
        ++largest.count;
        if (box.Area() > largest.area) {
            largest.area = box.Area();
            largest.width = box.Width();
        }
    });
    return largest;
}

}  // namespace

LogoRect LogoOf(const ComponentStore& store, int pageWidth, int pageHeight) {
    LogoRect logo{};
    std::int64_t best = 0;
    store::ForEachLine(store, [&](const ComponentNode* line) {
        const Largest largest = LargestOf(*line);
        if (largest.area <= best || largest.width >= kMaxWidthShare * pageWidth) return;
        if (largest.count == 1 && (store::WidthOf(*line) > kMaxSingleLineShare * pageWidth ||
                                   store::HeightOf(*line) > kMaxSingleLineShare * pageHeight)) {
            return;
        }
        best = largest.area;
        SetRect(logo, RectOf(*line));
    });
    return logo;
}

}  // namespace tavrix
