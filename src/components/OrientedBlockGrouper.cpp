// SPDX-License-Identifier: MIT
#include "components/OrientedBlockGrouper.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

#include "components/BlockGathering.h"
#include "components/ComponentStore.h"

namespace tavrix {
namespace {

using store::Box;
using store::HeightOf;
using store::WidthOf;

// Orientation votes
constexpr int kMaxVoterSide = 120;   // pixels, exclusive
constexpr int kSizeTolerance = 5;    // sizes within a fifth count as alike; also the weight of a vote
constexpr int kCentreTolerance = 5;  // half pixels, exclusive
// Stretching, in mean component sizes along and across the text
constexpr float kHorizontalStretch[] = {1.6f, 0.3f};  // to the right, to higher rows
constexpr float kVerticalStretch[] = {0.2f, 1.5f};
constexpr double kWideShare = 0.5;         // of the page's width; a wider box is marked
constexpr double kMinOverlapShare = 0.05;  // of the smaller box, exclusive
constexpr int kPageMargin = 50;            // pixels that a line of the page's size is short of it at most

// A component along one axis.
struct Extent {
    int low;
    int high;
    int size;  // unsigned 16-bit
    int centre;
};

// Counts, for extents of a line along one axis, those centred about an extent's centre and alike in size.
// An extent is kept as one key of low + high (twice its exact centre) and size, which determine it.
class AlignmentVotes {
  public:
    explicit AlignmentVotes(const std::vector<Extent>& extents) {
        for (const Extent& extent : extents) {
            if (extent.size < kSizes) keys.push_back(KeyOf(extent.low + extent.high, extent.size));
        }
        std::sort(keys.begin(), keys.end());
    }

    // Extents with low <= centre < high, |2 centre - low - high| < 5 and a size that differs by less than
    // a fifth.
    std::int64_t CountFor(const Extent& extent) const {
        const int tolerance = extent.size / kSizeTolerance;
        const auto find = [](auto from, auto end, int key) { return std::lower_bound(from, end, key); };
        auto from = find(keys.begin(), keys.end(), KeyOf(2 * extent.centre + 1 - kCentreTolerance, 0));
        const auto end = find(from, keys.end(), KeyOf(2 * extent.centre + kCentreTolerance, 0));
        std::int64_t count = 0;
        for (int offset = 1 - kCentreTolerance; offset < kCentreTolerance && from != end; ++offset) {
            const int sum = 2 * extent.centre + offset;
            const int holdsCentre = std::max(offset + 1, 2 - offset);  // least size that does
            from = find(from, end, KeyOf(sum, std::max(holdsCentre, extent.size - tolerance + 1)));
            const auto behind = find(from, end, KeyOf(sum, extent.size + tolerance));
            count += behind - from;
            from = behind;
        }
        return count;
    }

  private:
    static constexpr int kSizes = 256;  // larger ones are like no voter's

    static int KeyOf(int sum, int size) { return sum * kSizes + size; }

    std::vector<int> keys;
};

std::int64_t ScoreOf(const std::vector<Extent>& all, const std::vector<Extent>& voters) {
    const AlignmentVotes votes(all);
    std::int64_t score = 0;
    for (const Extent& voter : voters) {
        const int weight = voter.size / kSizeTolerance;
        if (weight != 0) score += weight * votes.CountFor(voter);
    }
    return score;
}

// Whether text runs along the rows: components of one line agree less in their columns than in their rows.
bool IsTextHorizontal(const ComponentStore& store) {
    std::int64_t columnScore = 0, rowScore = 0;
    for (const ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        for (const ComponentNode* line = block->firstChild; line != nullptr; line = line->next) {
            std::vector<Extent> columns, rows, columnVoters, rowVoters;
            for (const ComponentNode* node = line->firstChild; node != nullptr; node = node->next) {
                columns.push_back({node->left, node->right, WidthOf(*node), store::CentreX(*node)});
                rows.push_back({node->bottom, node->top, HeightOf(*node), store::CentreY(*node)});
                if (WidthOf(*node) >= kMaxVoterSide || HeightOf(*node) >= kMaxVoterSide) continue;
                columnVoters.push_back(columns.back());
                rowVoters.push_back(rows.back());
            }
            columnScore += ScoreOf(columns, columnVoters);
            rowScore += ScoreOf(rows, rowVoters);
        }
    }
    return columnScore <= rowScore;
}

double AreaOf(const Box& box) {
    return static_cast<double>(WidthOf(box)) * HeightOf(box);
}

bool OverlapsByRatio(const SmearedBox& a, const SmearedBox& b) {
    if (a.wide || b.wide) return LiesInside(a, b) || LiesInside(b, a);
    if (!DoOverlap(a, b)) return false;
    const double shared = double(std::min(a.top, b.top) - std::max(a.bottom, b.bottom) + 1) *
                          (std::min(a.right, b.right) - std::max(a.left, b.left) + 1);
    return shared / std::min(AreaOf(a), AreaOf(b)) > kMinOverlapShare;
}

}  // namespace

bool OrientedBlockGrouper::Run(ComponentStore& store) try {
    const MeanSize mean = MeanComponentSize(SourceLine(store));
    const float* stretch = IsTextHorizontal(store) ? kHorizontalStretch : kVerticalStretch;
    const double stepX = mean.w * double{stretch[0]}, stepY = mean.h * double{stretch[1]};
    const auto boxes = Smear(store, [&](const ComponentNode& node) {
        SmearedBox box{{node.left, 0, 0, node.bottom}};
        box.right = static_cast<std::int16_t>(std::min<double>(node.right + stepX, width - 1));
        box.top = static_cast<std::int16_t>(std::min<double>(node.top + stepY, height - 1));
        box.wide = WidthOf(box) > static_cast<int>(width * kWideShare);
        return box;
    });
    if (!GatherByCentre(store, MergeOverlaps(boxes, OverlapsByRatio))) return false;

    for (ComponentNode* block = store.firstBlock; block != nullptr; block = block->next) {
        for (ComponentNode *line = block->firstChild, *following; line != nullptr; line = following) {
            following = line->next;
            if (WidthOf(*line) > width - kPageMargin && HeightOf(*line) > height - kPageMargin) {
                store::DeleteLine(store, line);
            }
        }
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace tavrix
