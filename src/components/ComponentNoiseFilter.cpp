// SPDX-License-Identifier: MIT
#include "components/ComponentNoiseFilter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"

namespace tavrix {
namespace {

using store::ForEachBlock;
using store::ForEachChild;
using store::HeightOf;
using store::WidthOf;

// FilterBySize
constexpr int kRuleAspect = 20;    // a rule is at least so many times longer than thick
constexpr int kLargeSide = 300;    // pixels; longer in both directions: a frame or a picture
constexpr int kLimitStep = 2;      // pixels by which Run raises its limit
constexpr int kLastLimit = 65534;  // pixels
// FilterLineNoise
constexpr int kDotSide = 3;      // pixels; smaller in both directions: a dot, left out of the mean sizes
constexpr int kLongAspect = 6;   // an elongated component is at least so many times longer than thick
constexpr int kLongInPages = 2;  // page heights that an elongated component is allowed at least
constexpr int kLongInMeans = 3;  // mean sides of its line, likewise
constexpr int kEdgeShare = 5;    // a page-high component in the outer fifth on either side is a frame's edge
// FilterForTextLines and FilterForBinarization
constexpr int kMinLineSide = 10;     // pixels
constexpr int kMinSide = 2;          // pixels
constexpr int kMaxTextWidth = 300;   // pixels
constexpr int kMaxTextHeight = 256;  // pixels
constexpr int kPageMargin = 50;      // pixels short of the page's side

int LongerSide(const ComponentNode& node) {
    return std::max(WidthOf(node), HeightOf(node));
}

// Height of a component whichever way up it is.
int AbsoluteHeightOf(const ComponentNode& node) {
    return std::abs(node.top - node.bottom) + 1;
}

template <class IsNoise>
void DeleteComponentsIf(ComponentStore& store, ComponentNode* line, IsNoise isNoise) {
    ForEachChild(*line, [&](ComponentNode* node) {
        if (isNoise(*node)) store::DeleteComponent(store, node);
    });
}

void DeleteBlockIfEmpty(ComponentStore& store, ComponentNode* block) {
    if (block->firstChild == nullptr) store::DeleteBlock(store, block);
}

// Truncated mean of sides that are no dot's; 0 of none.
struct MeanSide {
    void Add(int side) {
        if (side < kDotSide) return;
        sum += side;
        ++count;
    }
    int Value() const { return count != 0 ? static_cast<int>(sum / count) : 0; }

    std::int64_t sum = 0;
    std::int64_t count = 0;
};

// The greater of a line's mean width and height: one stands in for the other when that has nothing to count.
int GreaterMeanSide(const ComponentNode& line) {
    MeanSide width, height;
    ForEachChild(line, [&](const ComponentNode* node) {
        width.Add(WidthOf(*node));
        height.Add(HeightOf(*node));
    });
    return std::max(width.Value(), height.Value());
}

bool IsSliver(const ComponentNode& node) {
    return WidthOf(node) < kMinSide || AbsoluteHeightOf(node) < kMinSide;
}

}  // namespace

bool IsSmallLine(const ComponentNode& line) {
    return HeightOf(line) < kMinLineSide || WidthOf(line) < kMinLineSide;
}

// Every pass deletes the components whose longer side the limit has reached; those that break the other
// rules went with the first pass. So one list, ordered by longer side and within that as the passes walk,
// stands for all later passes.
bool ComponentNoiseFilter::Run(ComponentStore& store, int, int) {
    int limit = kLimitStep;
    FilterBySize(store, limit, limit);
    if (store.liveCount <= store.growStep) return true;

    struct Candidate {
        int limit;  // the first that deletes the node
        ComponentNode* node;
    };
    std::vector<Candidate> candidates;
    store::ForEachComponent(store, [&](ComponentNode* node) {
        candidates.push_back({(LongerSide(*node) + 1) / kLimitStep * kLimitStep, node});
    });
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.limit < b.limit; });

    auto candidate = candidates.begin();
    while (store.liveCount > store.growStep && limit < kLastLimit) {
        limit += kLimitStep;
        for (; candidate != candidates.end() && candidate->limit <= limit; ++candidate) {
            ComponentNode* line = candidate->node->parent;
            store::DeleteComponent(store, candidate->node);
            if (line->firstChild != nullptr) continue;
            ComponentNode* block = line->parent;
            store::DeleteLine(store, line);
            DeleteBlockIfEmpty(store, block);
        }
    }
    return true;
}

bool ComponentNoiseFilter::FilterBySize(ComponentStore& store, int maxW, int maxH) {
    ForEachBlock(store, [&](ComponentNode* block) {
        ForEachChild(*block, [&](ComponentNode* line) {
            DeleteComponentsIf(store, line, [&](const ComponentNode& node) {
                const int w = WidthOf(node), h = HeightOf(node);
                const bool isKept = (w > maxW || h > maxH) && w < kRuleAspect * h && h < kRuleAspect * w &&
                                    !(w > kLargeSide && h > kLargeSide);
                return !isKept;
            });
            if (line->firstChild == nullptr) store::DeleteLine(store, line);
        });
        DeleteBlockIfEmpty(store, block);
    });
    return true;
}

void ComponentNoiseFilter::FilterLineNoise(ComponentStore& store) {
    ForEachBlock(store, [&](ComponentNode* block) {
        ForEachChild(*block, [&](ComponentNode* line) {
            if (line->firstChild == nullptr) return;
            const int mean = GreaterMeanSide(*line);
            if (mean == 0) {
                store::DeleteLine(store, line);
                return;
            }
            const int limit = std::max(kLongInPages * height, kLongInMeans * mean);
            DeleteComponentsIf(store, line, [&](const ComponentNode& node) {
                const int w = WidthOf(node), h = HeightOf(node);
                if (w < kDotSide && h < kDotSide) return true;
                if ((w >= kLongAspect * h || h >= kLongAspect * w) && std::max(w, h) > limit) return true;
                return node.bottom == 0 && node.top == height - 1 &&
                       (node.left < width / kEdgeShare || node.right > (kEdgeShare - 1) * width / kEdgeShare);
            });
            if (line->firstChild == nullptr) store::DeleteLine(store, line);
        });
        DeleteBlockIfEmpty(store, block);
    });
}

bool ComponentNoiseFilter::FilterForTextLines(ComponentStore& store) {
    ForEachBlock(store, [&](ComponentNode* block) {
        ForEachChild(*block, [&](ComponentNode* line) {
            if (IsSmallLine(*line)) {
                store::DeleteLine(store, line);
                return;
            }
            DeleteComponentsIf(store, line, [](const ComponentNode& node) {
                return IsSliver(node) || WidthOf(node) > kMaxTextWidth ||
                       AbsoluteHeightOf(node) > kMaxTextHeight;
            });
        });
        DeleteBlockIfEmpty(store, block);
    });
    return true;
}

bool ComponentNoiseFilter::FilterForBinarization(ComponentStore& store) {
    ForEachBlock(store, [&](ComponentNode* block) {
        while (block->firstChild != nullptr && IsSmallLine(*block->firstChild)) {
            store::DeleteLine(store, block->firstChild);
        }
        if (block->firstChild != nullptr) {
            DeleteComponentsIf(store, block->firstChild, [this](const ComponentNode& node) {
                return IsSliver(node) ||
                       (WidthOf(node) > width - kPageMargin && AbsoluteHeightOf(node) > height - kPageMargin);
            });
        }
        DeleteBlockIfEmpty(store, block);
    });
    return true;
}

}  // namespace tavrix
