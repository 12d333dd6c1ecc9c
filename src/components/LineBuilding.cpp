// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

#include "components/BoxGrid.h"
#include "components/ComponentStore.h"
#include "components/LineNodes.h"
#include "components/TextLineGrouper.h"

namespace tavrix {
namespace {

using Position = BoxGrid::Position;

constexpr int kReachInHeights = 3;  // a chain bridges gaps below this many heights of its taller component
constexpr int kRowCost = 5;         // a row of offset weighs as much as so many columns
constexpr int kNarrow = 5;          // components wider than this leave their outermost columns
constexpr int kMargin = 2;          // columns on each side to the neighbours
constexpr int kFarSide = 9999;      // where minimum searches over coordinates start

bool LiesStrictlyInRows(int y, const ComponentNode& node) {
    return node.bottom < y && y < node.top;
}

// The components of a list sorted by left, each waiting for its chain.
class Chains {
  public:
    explicit Chains(const ComponentNode& line) : nodes(lines::ChildrenOf(line)), grid(nodes) {}

    void Label() {
        std::uint32_t label = 0;
        for (Position first = 0; first < nodes.size(); ++first) {
            if (grid.IsRemoved(first)) continue;
            ++label;
            for (Position current = first; current < nodes.size(); current = NextInChain(current)) {
                nodes[current]->pixelCount = label;
                grid.Remove(current);
            }
        }
    }

  private:
    // The unlabelled component that continues a chain best after `current`, or nodes.size(). Columns of
    // cells are searched to the right until none can hold one within reach or at a lower cost.
    Position NextInChain(Position current) {
        const ComponentNode& from = *nodes[current];
        const int fromHeight = store::HeightOf(from);
        const int fromX = store::CentreX(from);
        const int fromY = store::CentreY(from);
        int bestCost = std::numeric_limits<int>::max();
        Position best = static_cast<Position>(nodes.size());

        const auto consider = [&](Position later) {
            if (later <= current) return;
            const ComponentNode& to = *nodes[later];
            const int toHeight = store::HeightOf(to);
            const int toY = store::CentreY(to);
            if (!LiesStrictlyInRows(fromY, to) && !LiesStrictlyInRows(toY, from)) return;
            if (to.left - from.right >= kReachInHeights * std::max(fromHeight, toHeight)) return;
            const int acrossColumns = std::abs(fromX - store::CentreX(to));
            const int acrossRows = std::abs(fromY - toY);
            if (acrossRows > acrossColumns) return;
            const int cost = acrossColumns + std::abs(fromHeight - toHeight) + kRowCost * acrossRows;
            if (cost > bestCost || (cost == bestCost && later > best)) return;
            bestCost = cost;
            best = later;
        };

        grid.ForEachApart(consider);
        const int bottom = std::min(from.bottom, from.top);
        const int top = std::max(from.bottom, from.top);
        const int reach = kReachInHeights * std::max(fromHeight, grid.MaxHeight());
        for (int column = grid.ColumnOf(from.left); column < grid.Columns(); ++column) {
            const int left = grid.LeftOf(column);
            if (left - from.right >= reach || left - fromX > bestCost) break;
            grid.ForEachInColumn(column, bottom, top, consider);
        }
        return best;
    }

    std::vector<ComponentNode*> nodes;
    BoxGrid grid;
};

// A run of columns [from, to) of a line.
struct ColumnRun {
    int from;
    int to;
};

// The runs of a line's columns, counted from its left, over which some component stands, from left to
// right.
std::vector<ColumnRun> CoveredColumns(const ComponentNode& line) {
    const int lineWidth = line.right - line.left + 1;
    std::vector<ColumnRun> runs;
    for (const ComponentNode* node = line.firstChild; node != nullptr; node = node->next) {
        if (store::HeightOf(*node) == 0) continue;
        const int margin = store::WidthOf(*node) > kNarrow ? kMargin : 0;
        const int from = std::max(node->left + margin - line.left, 0);
        const int to = std::min(node->right - margin - line.left, lineWidth);
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

void TextLineGrouper::LabelChains(ComponentNode* line) const {
    Chains(*line).Label();
}

void TextLineGrouper::SplitByLabel(ComponentStore& store, ComponentNode* block, ComponentNode* line) const {
    // A chain is numbered by its first component, so that the chains come in the order of their labels.
    std::vector<ComponentNode*> chained = lines::ChildrenOf(*line);
    std::stable_sort(chained.begin(), chained.end(), [](const ComponentNode* a, const ComponentNode* b) {
        return a->pixelCount < b->pixelCount;
    });
    for (std::size_t first = 0; first < chained.size();) {
        ComponentNode* const chain = store::InsertLine(store, block, nullptr, block->firstChild, {});
        if (chain == nullptr) break;
        std::size_t i = first + 1;
        for (; i < chained.size() && chained[i]->pixelCount == chained[first]->pixelCount; ++i) {
            store::MoveToParent(line, chained[i], chain);
        }
        store::MoveToParent(line, chained[first], chain);
        first = i;
    }
    if (line->firstChild == nullptr) store::DeleteLine(store, line);
    store::RebuildLineBoxes(store, block);
}

void TextLineGrouper::ChainIntoLines(ComponentStore& store) const {
    MergeColumnFragments(store);
    RemoveEdgeMarks(store);
    ComponentNode* const line = lines::WorkLine(store);
    if (line == nullptr) return;
    ComponentNode* const block = store.firstBlock;
    LabelChains(line);
    SplitByLabel(store, block, line);
    for (ComponentNode* chain : lines::ChildrenOf(*block)) MergeByColumnProjection(store, chain);
    for (ComponentNode* chain : lines::ChildrenOf(*block)) store::SortChildren(chain, true);
}

void TextLineGrouper::MergeByColumnProjection(ComponentStore& store, ComponentNode* line) const {
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
        Region box{kFarSide, kFarSide, 0, 0};
        const std::size_t run = gathered[i].run;
        for (; i < gathered.size() && gathered[i].run == run; ++i) {
            box = Union(box, Region::Of(*gathered[i].node));
            store::DeleteComponent(store, gathered[i].node);
        }
        store::InsertComponent(store, line, nullptr, line->firstChild,
                               {static_cast<std::int16_t>(box.left), static_cast<std::int16_t>(box.top),
                                static_cast<std::int16_t>(box.right), static_cast<std::int16_t>(box.bottom)});
    }
}

void TextLineGrouper::BuildLines(ComponentStore& store) const {
    ComponentNode* const line = lines::WorkLine(store);
    if (line == nullptr) return;
    store::SortChildren(line, true);
    ChainIntoLines(store);
    MergeLinePairs(store);
}

}  // namespace tavrix
