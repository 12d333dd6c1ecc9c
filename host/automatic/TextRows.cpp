// SPDX-License-Identifier: MIT
#include "automatic/TextRows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "automatic/Letters.h"

namespace host {
namespace {

constexpr double kSlopes[] = {0, 0.15, -0.15, 0.3, -0.3, 0.45, -0.45};  // rows along and down
constexpr double kOffLine = 0.15;   // that two in a row may be off the line, in heights of the lower one...
constexpr int kMoreOff = 1;         // ...and so many pixels more
constexpr double kAhead = 0.2;      // that the next one begins behind another, in the same heights
constexpr double kReachDown = 1.5;  // up and down to the next one in a slanting row, in heights
constexpr std::size_t kRow = 4;
constexpr std::size_t kLongRow = 12;      // chance makes hardly any of these
constexpr std::size_t kManyInRows = 8;    // shorter rows count from so many letters in them on...
constexpr double kShareInRows = 0.4;      // ...that are so many of all with a neighbour
constexpr double kShareOfStrokes = 0.75;  // of those in rows; coins and bricks stand in rows too
constexpr int kBand = 16;                 // pixels: neighbours are looked for in bands of that height

std::size_t LettersIn(const std::vector<TextRow>& rows) {
    return std::accumulate(rows.begin(), rows.end(), std::size_t{0},
                           [](std::size_t count, const TextRow& row) { return count + row.size(); });
}

// What may be letters, each with those that may follow it in its row.
class Candidates {
  public:
    Candidates(std::vector<Area> ofLetterShape, int pageHeight) : areas(std::move(ofLetterShape)) {
        std::sort(areas.begin(), areas.end(), [](const Area& a, const Area& b) { return a.left < b.left; });
        bands.resize(static_cast<std::size_t>(pageHeight / kBand) + 1);
        for (std::size_t i = 0; i < areas.size(); ++i) bands[BandOf(MiddleOf(areas[i]))].push_back(i);
        hasNeighbour.resize(areas.size());
        for (std::size_t i = 0; i < areas.size(); ++i) {
            starts.push_back(followers.size());
            CollectFollowers(i);
        }
        starts.push_back(followers.size());
    }

    // Of all slopes those of the one with most letters in rows; empty where these may well be chance.
    std::vector<TextRow> Rows() const {
        std::vector<TextRow> best;
        std::size_t most = 0;
        for (const double slope : kSlopes) {
            std::vector<TextRow> rows = RowsAlong(slope);
            const std::size_t count = LettersIn(rows);
            if (count <= most || !AreText(rows)) continue;
            most = count;
            best = std::move(rows);
        }
        return best;
    }

  private:
    static int MiddleOf(const Area& area) { return (area.top + area.bottom) / 2; }

    std::size_t BandOf(int y) const {
        return std::min(static_cast<std::size_t>(std::max(0, y) / kBand), bands.size() - 1);
    }

    std::vector<TextRow> RowsAlong(double slope) const {
        std::vector<std::size_t> last(areas.size()), length(areas.size());
        for (std::size_t i = areas.size(); i-- > 0;) {
            const auto end = followers.begin() + static_cast<std::ptrdiff_t>(starts[i + 1]);
            const auto next =
                std::find_if(followers.begin() + static_cast<std::ptrdiff_t>(starts[i]), end,
                             [&](std::size_t k) { return AreOnLine(areas[i], areas[k], slope); });
            last[i] = next == end ? i : last[*next];
            ++length[last[i]];
        }
        std::vector<TextRow> rows;
        std::vector<std::size_t> rowOf(areas.size());  // by the last letter, one more than its place
        for (std::size_t i = 0; i < areas.size(); ++i) {
            if (length[last[i]] < kRow) continue;
            std::size_t& row = rowOf[last[i]];
            if (row == 0) {
                rows.emplace_back();
                row = rows.size();
            }
            rows[row - 1].push_back(areas[i]);
        }
        return rows;
    }

    bool AreText(const std::vector<TextRow>& rows) const {
        std::size_t inRows = 0, longest = 0;
        std::ptrdiff_t strokes = 0;
        for (const TextRow& row : rows) {
            inRows += row.size();
            longest = std::max(longest, row.size());
            strokes += std::count_if(row.begin(), row.end(), HasStrokes);
        }
        const auto all = std::count(hasNeighbour.begin(), hasNeighbour.end(), true);
        const auto count = static_cast<double>(inRows);
        return static_cast<double>(strokes) >= kShareOfStrokes * count &&
               (longest >= kLongRow ||
                (inRows >= kManyInRows && count >= kShareInRows * static_cast<double>(all)));
    }

    static bool AreOnLine(const Area& left, const Area& right, double slope) {
        const double rise = slope * (right.left + right.right - left.left - left.right) / 2;
        const double limit = kOffLine * std::min(left.Height(), right.Height()) + kMoreOff;
        return std::fabs(right.bottom - left.bottom - rise) <= limit ||
               std::fabs(right.top - left.top - rise) <= limit;
    }

    void CollectFollowers(std::size_t i) {
        const Area& area = areas[i];
        const int reachDown = static_cast<int>(kReachDown * area.Height());
        const double reach = area.right + kNeighbourReach * area.Height();
        const std::size_t last = BandOf(MiddleOf(area) + reachDown);
        for (std::size_t band = BandOf(MiddleOf(area) - reachDown); band <= last; ++band) {
            for (auto k = std::upper_bound(bands[band].begin(), bands[band].end(), i);
                 k != bands[band].end() && areas[*k].left <= reach; ++k) {
                const Area& other = areas[*k];
                const int lower = std::min(area.Height(), other.Height());
                if (other.left < area.left + kAhead * lower || !MayFollow(area, other)) continue;
                followers.push_back(*k);
                if (AreNeighbours(area, other)) hasNeighbour[i] = hasNeighbour[*k] = true;
            }
        }
        std::sort(followers.begin() + static_cast<std::ptrdiff_t>(starts.back()), followers.end());
    }

    std::vector<Area> areas;                      // from left to right
    std::vector<std::vector<std::size_t>> bands;  // which of them have their middle in it
    std::vector<bool> hasNeighbour;
    std::vector<std::size_t> starts, followers;  // of every one, the nearest first
};

Area Transposed(Area area) {
    std::swap(area.left, area.top);
    std::swap(area.right, area.bottom);
    return area;
}

Candidates CandidatesOf(const AreaTree& tree, const std::vector<bool>& isInk, bool isSideways) {
    const int pageHeight = isSideways ? tree.Width() : tree.Height();
    std::vector<Area> areas;
    for (std::size_t i = 0; i < isInk.size(); ++i) {
        if (!isInk[i]) continue;
        const Area area = isSideways ? Transposed(tree.Areas()[i]) : tree.Areas()[i];
        if (HasLetterShape(area, pageHeight)) areas.push_back(area);
    }
    return {std::move(areas), pageHeight};
}

}  // namespace

std::vector<TextRow> FindTextRows(const AreaTree& tree, const std::vector<bool>& isInk) {
    return CandidatesOf(tree, isInk, false).Rows();
}

std::vector<Area> FindTextLetters(const AreaTree& tree, const std::vector<bool>& isInk) {
    std::vector<Area> letters;
    for (const bool isSideways : {false, true}) {
        for (const TextRow& row : CandidatesOf(tree, isInk, isSideways).Rows()) {
            for (const Area& letter : row) letters.push_back(isSideways ? Transposed(letter) : letter);
        }
        if (!letters.empty()) break;
    }
    return letters;
}

}  // namespace host
