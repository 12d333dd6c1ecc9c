// SPDX-License-Identifier: MIT
#include "components/CardLogo.h"

#include <cstdint>

#include "components/ComponentStore.h"

namespace tavrix {
namespace {

using store::HeightOf;
using store::WidthOf;

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
    for (const ComponentNode* node = line.firstChild; node != nullptr; node = node->next) {
        const int w = WidthOf(*node), h = HeightOf(*node);
        if (w < kMinSide || h < kMinSide) continue;
        ++largest.count;
        const std::int64_t area = std::int64_t{w} * h;
        if (area > largest.area) {
            largest.area = area;
            largest.width = w;
        }
    }
    return largest;
}

}  // namespace

LogoRect LogoOf(const ComponentStore& store, int pageWidth, int pageHeight) {
    LogoRect logo{};
    std::int64_t best = 0;
    for (const ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        for (const ComponentNode* line = block->firstChild; line != nullptr; line = line->next) {
            const Largest largest = LargestOf(*line);
            if (largest.area <= best || largest.width >= kMaxWidthShare * pageWidth) continue;
            if (largest.count == 1 && (WidthOf(*line) > kMaxSingleLineShare * pageWidth ||
                                       HeightOf(*line) > kMaxSingleLineShare * pageHeight)) {
                continue;
            }
            best = largest.area;
            logo = {line->left, line->top, line->right, line->bottom, 0};
        }
    }
    return logo;
}

}  // namespace tavrix
