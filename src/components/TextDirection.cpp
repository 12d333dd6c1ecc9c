// SPDX-License-Identifier: MIT
#include "components/TextDirection.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "components/ComponentTree.h"

namespace tavrix {
namespace {

constexpr int kMaxVoterSide = 120;   // pixels, exclusive
constexpr int kSizeTolerance = 5;    // sizes within a fifth count as alike; also the weight of a vote
constexpr int kCentreTolerance = 5;  // half pixels, exclusive

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

}  // namespace

bool IsTextHorizontal(const ComponentStore& store) {
    std::int64_t columnScore = 0, rowScore = 0;
    store::ForEachLine(store, [&](const ComponentNode* line) {
        std::vector<Extent> columns, rows, columnVoters, rowVoters;
        store::ForEachChild(*line, [&](const ComponentNode* node) {
            const int w = store::WidthOf(*node), h = store::HeightOf(*node);
            columns.push_back({node->left, node->right, w, store::CentreX(*node)});
            rows.push_back({node->bottom, node->top, h, store::CentreY(*node)});
            if (w >= kMaxVoterSide || h >= kMaxVoterSide) return;
            columnVoters.push_back(columns.back());
            rowVoters.push_back(rows.back());
        });
        columnScore += ScoreOf(columns, columnVoters);
        rowScore += ScoreOf(rows, rowVoters);
    });
    return columnScore <= rowScore;
}

}  // namespace tavrix
