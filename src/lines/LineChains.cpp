// SPDX-License-Identifier: MIT
#include "lines/LineChains.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"

namespace tavrix::lines {
namespace {

constexpr int kReachInHeights = 3;  // a chain bridges gaps below this many heights of its taller component
constexpr int kRowCost = 5;         // a row of offset weighs as much as so many columns

bool LiesStrictlyInRows(int y, const ComponentNode& node) {
    return node.bottom < y && y < node.top;
}

// The components of a list sorted by left, each waiting for its chain. Those whose rows meet the same
// band of rows stand together, in list order. The few that are taller than text stand apart.
class Chains {
  public:
    explicit Chains(const ComponentNode& line) : nodes(store::ChildrenOf(line)) {
        for (const ComponentNode* node : nodes) {
            lowest = std::min({lowest, int{node->bottom}, int{node->top}});
            highest = std::max({highest, int{node->bottom}, int{node->top}});
        }
        if (!nodes.empty()) bands.resize(BandOf(highest) + 1);
        for (int i = 0; i < Count(); ++i) {
            const ComponentNode& node = At(i);
            if (store::HeightOf(node) > kTallest || node.right < node.left || node.top < node.bottom) {
                apart.push_back(i);
                continue;
            }
            tallest = std::max<int>(tallest, store::HeightOf(node));
            for (std::size_t band = BandOf(node.bottom); band <= BandOf(node.top); ++band) {
                bands[band].push_back(i);
            }
        }
    }

    void Label() {
        for (ComponentNode* node : nodes) node->pixelCount = 0;
        std::uint32_t label = 0;
        for (int first = 0; first < Count(); ++first) {
            if (At(first).pixelCount != 0) continue;
            ++label;
            for (int i = first; i < Count(); i = NextInChain(i)) At(i).pixelCount = label;
        }
    }

  private:
    static constexpr int kBandRows = 16;
    static constexpr int kTallest = 256;  // rows

    ComponentNode& At(int i) const { return *nodes[static_cast<std::size_t>(i)]; }
    int Count() const { return static_cast<int>(nodes.size()); }
    std::size_t BandOf(int row) const { return static_cast<std::size_t>((row - lowest) / kBandRows); }

    // The unlabelled component that continues a chain best after the one at `current`, or Count(). A band
    // is searched to the right until none in it can be within reach or cost less.
    int NextInChain(int current) const {
        const ComponentNode& from = At(current);
        const int fromHeight = store::HeightOf(from);
        const int fromX = store::CentreX(from);
        int bestCost = std::numeric_limits<int>::max();
        int best = Count();
        const auto consider = [&](int i) {
            const std::optional<int> cost = CostOf(from, At(i));
            if (!cost || *cost > bestCost || (*cost == bestCost && i > best)) return;
            bestCost = *cost;
            best = i;
        };

        for (auto i = std::upper_bound(apart.begin(), apart.end(), current); i != apart.end(); ++i) {
            consider(*i);
        }
        const int reach = kReachInHeights * std::max(fromHeight, tallest);
        const std::size_t last = BandOf(std::max(from.bottom, from.top));
        for (std::size_t b = BandOf(std::min(from.bottom, from.top)); b <= last; ++b) {
            const std::vector<int>& band = bands[b];
            for (auto i = std::upper_bound(band.begin(), band.end(), current); i != band.end(); ++i) {
                const int left = At(*i).left;
                if (left - from.right >= reach || left - fromX > bestCost) break;
                consider(*i);
            }
        }
        return best;
    }

    // What it costs to go on from one component with another; none when they do not go together.
    static std::optional<int> CostOf(const ComponentNode& from, const ComponentNode& to) {
        if (to.pixelCount != 0) return std::nullopt;
        const int fromY = store::CentreY(from);
        const int toY = store::CentreY(to);
        if (!LiesStrictlyInRows(fromY, to) && !LiesStrictlyInRows(toY, from)) return std::nullopt;
        const int fromHeight = store::HeightOf(from);
        const int toHeight = store::HeightOf(to);
        if (to.left - from.right >= kReachInHeights * std::max(fromHeight, toHeight)) return std::nullopt;
        const int acrossColumns = std::abs(store::CentreX(from) - store::CentreX(to));
        const int acrossRows = std::abs(fromY - toY);
        if (acrossRows > acrossColumns) return std::nullopt;
        return acrossColumns + std::abs(fromHeight - toHeight) + kRowCost * acrossRows;
    }

    std::vector<ComponentNode*> nodes;
    std::vector<std::vector<int>> bands;
    std::vector<int> apart;
    int lowest = std::numeric_limits<int>::max();
    int highest = std::numeric_limits<int>::min();
    int tallest = 0;  // height of one in the bands
};

// Moves each chain into a new line; chains that find the store full stay together in the old one.
void SplitByLabel(ComponentStore& store, ComponentNode* block, ComponentNode* line) {
    // A chain is numbered by its first component, so that the chains come in the order of their labels.
    std::vector<ComponentNode*> chained = store::ChildrenOf(*line);
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

}  // namespace

void ChainIntoLines(ComponentStore& store) {
    ComponentNode* const line = store::FirstLine(store);
    if (line == nullptr) return;
    Chains(*line).Label();
    SplitByLabel(store, store.firstBlock, line);
}

}  // namespace tavrix::lines
