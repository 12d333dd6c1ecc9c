// SPDX-License-Identifier: MIT
#include "lines/TextHeight.h"

#include <cstdint>

#include "components/ComponentTree.h"
#include "lines/HeightHistogram.h"

namespace tavrix::lines {
namespace {

constexpr int kHeightRoom = 500;               // rows; taller components are left out
constexpr std::uint32_t kTallestLeftOut = 10;  // components that may be taller than the text
constexpr int kWide = 2;                       // heights from which on a component is wide
constexpr int kTall = 3;                       // widths from which on it is tall

}  // namespace

int EstimateTextHeight(const ComponentStore& store) {
    const ComponentNode* line = store::FirstLine(store);
    if (line == nullptr) return 0;
    HeightHistogram<kHeightRoom> heights;
    store::ForEachChild(*line, [&](const ComponentNode* node) {
        const int height = store::HeightOf(*node);
        if (store::WidthOf(*node) < kWide * height) heights.Add(height);
    });
    if (heights.Empty()) return store::HeightOf(*line);
    return heights.Typical(heights.ReachedByMoreThan(kTallestLeftOut));
}

int EstimateLineHeight(const ComponentNode& line) {
    HeightHistogram<kHeightRoom> heights;
    store::ForEachChild(line, [&](const ComponentNode* node) {
        const int width = store::WidthOf(*node), height = store::HeightOf(*node);
        if (width < kWide * height && height < kTall * width) heights.Add(height);
    });
    return heights.TypicalOfAll();
}

}  // namespace tavrix::lines
