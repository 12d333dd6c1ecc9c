// SPDX-License-Identifier: MIT
#include "lines/ColumnProjection.h"

#include <algorithm>
#include <vector>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Rect.h"

namespace tavrix::lines {
namespace {

constexpr int kNarrow = 5;  // columns; wider components leave their outermost ones
constexpr int kMargin = 2;  // columns on each side

// The runs of a line's columns, counted from its left, over which some component stands, from left to
// right.
std::vector<ColumnRun> CoveredColumns(const ComponentNode& line) {
    const int lineWidth = line.right - line.left + 1;
    std::vector<ColumnRun> runs;
    for (const ComponentNode* node = line.firstChild; node != nullptr; node = node->next) {
        if (store::HeightOf(*node) == 0) continue;
        const ColumnRun covered = CoverageOf(RectOf(*node));
        const int from = std::max(covered.from - line.left, 0);
        const int to = std::min(covered.to - line.left, lineWidth);
        if (from < to) runs.push_back({from, to});
    }
    std::sort(runs.begin(), runs.end(),
              [](const ColumnRun& a, const ColumnRun& b) { return a.from < b.from; });
    std::size_t count = 0;
    for (const ColumnRun& run : runs) {
        if (count > 0 && run.from <= runs[count - 1].to) {
            runs[count - 1].to = std::max(runs[count - 1].to, run.to);
        } else {
            runs[count++] = run;
        }
    }
    runs.resize(count);
    return runs;
}

}  // namespace

ColumnRun CoverageOf(const Rect& box) {
    const int margin = box.Width() > kNarrow ? kMargin : 0;
    return {box.x0 + margin, box.x1 - margin};
}

void MergeByColumnProjection(ComponentStore& store, ComponentNode* line) {
    struct Gathered {
        std::size_t run;
        ComponentNode* node;
    };
    const std::vector<ColumnRun> runs = CoveredColumns(*line);
    std::vector<Gathered> gathered;
    for (ComponentNode* node = line->firstChild; node != nullptr; node = node->next) {
        const int x = store::CentreX(*node) - line->left;
        const auto after = std::upper_bound(runs.begin(), runs.end(), x,
                                            [](int value, const ColumnRun& run) { return value < run.from; });
        if (after == runs.begin() || x > std::prev(after)->to) continue;
        gathered.push_back({static_cast<std::size_t>(after - runs.begin()), node});
    }
    std::stable_sort(gathered.begin(), gathered.end(),
                     [](const Gathered& a, const Gathered& b) { return a.run < b.run; });

    for (std::size_t i = 0; i < gathered.size();) {
        Rect box = store::kUnionStart;
        const std::size_t run = gathered[i].run;
        for (; i < gathered.size() && gathered[i].run == run; ++i) {
            box = Union(box, RectOf(*gathered[i].node));
            store::DeleteComponent(store, gathered[i].node);
        }
        store::InsertComponent(store, line, nullptr, line->firstChild, box);
    }
}

}  // namespace tavrix::lines
