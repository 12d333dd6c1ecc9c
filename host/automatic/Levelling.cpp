// SPDX-License-Identifier: MIT
#include "automatic/Levelling.h"

#include <algorithm>
#include <array>
#include <utility>

#include "automatic/Filters.h"

namespace host {
namespace {

constexpr int kCell = 4;                     // pixels: the threshold is worked out on a grid of such cells
constexpr int kNoiseBlock = 8;               // cells: noise is measured in blocks of that size
constexpr int kBlock = kNoiseBlock * kCell;  // the same in pixels
constexpr int kQuietShare = 5;               // the calmest fifth of a block shows its noise
constexpr int kNoiseFactor = 3;              // edges count from so much noise on...
constexpr int kEdgeFloor = 6;                // ...and so many levels more
constexpr int kWindow = 41;                  // pixels: where letters are small or unknown
constexpr double kWindowPerHeight = 1.6;
constexpr double kWiden = 2.5;            // every further window is so much wider...
constexpr double kFarWeight = 0.03;       // ...and counts so much less
constexpr double kNoEdges = 1e-6;         // less evidence is none
constexpr double kReachPerHeight = 0.08;  // from the middle of a stroke to beside it, in letter heights
constexpr int kDeeper = 6;                // of kWhole: how much of its depth a dark stroke gains...
constexpr int kHigher = 2;                // ...and of its height a light gap
constexpr int kWhole = 8;
constexpr int kSteepness = 8;  // of the levelled picture: shades that matter end up black or white

// Smoothing against grain, in the standard deviation of a Gaussian; small type bears little of it.
double Smoothing(int letterHeight) {
    return letterHeight == 0 ? 0.8 : std::clamp(0.03 * letterHeight, 0.3, 2.5);
}

// Noise of every block: the edge strength that its calmest fifth stays below, with its neighbours'.
Plane<double> MeasureNoise(const Levels& edges) {
    Plane<double> noise((edges.Width() + kBlock - 1) / kBlock, (edges.Height() + kBlock - 1) / kBlock);
    for (int by = 0; by < noise.Height(); ++by) {
        for (int bx = 0; bx < noise.Width(); ++bx) {
            std::array<std::array<int, 256>, 2> counts =
                {};  // even and odd columns: like neighbours wait for each other
            const int bottom = std::min(edges.Height(), (by + 1) * kBlock);
            const int right = std::min(edges.Width(), (bx + 1) * kBlock);
            for (int y = by * kBlock; y < bottom; ++y) {
                const std::uint8_t* row = edges.Row(y);
                for (int x = bx * kBlock; x < right; ++x) ++counts[x % 2][row[x]];
            }
            int rest = (bottom - by * kBlock) * (right - bx * kBlock) / kQuietShare;
            int level = 0;
            while (rest >= counts[0][level] + counts[1][level]) {
                rest -= counts[0][level] + counts[1][level];
                ++level;
            }
            noise.Row(by)[bx] = level;
        }
    }
    Plane<double> smooth(noise.Width(), noise.Height());
    AddMeans(noise, 3, 1, smooth);
    return smooth;
}

// The edges of every cell above the noise, and the sum of their middles, twice.
struct Evidence {
    Plane<double> weight, sum;
};

Evidence Gather(const Extremes& extremes, const Levels& edges) {
    const Plane<double> noise = MeasureNoise(edges);
    const int columns = (edges.Width() + kCell - 1) / kCell;
    const int rows = (edges.Height() + kCell - 1) / kCell;
    Evidence evidence = {Plane<double>(columns, rows), Plane<double>(columns, rows)};
    for (int y = 0; y < edges.Height(); ++y) {
        const std::uint8_t* edge = edges.Row(y);
        const std::uint8_t* light = extremes.lightest.Row(y);
        const std::uint8_t* dark = extremes.darkest.Row(y);
        const double* quiet = noise.Row(y / kBlock);
        double* weight = evidence.weight.Row(y / kCell);
        double* sum = evidence.sum.Row(y / kCell);
        for (int cell = 0; cell < columns; ++cell) {
            const int floor = static_cast<int>(kNoiseFactor * quiet[cell / kNoiseBlock]) + kEdgeFloor;
            const int end = std::min(edges.Width(), (cell + 1) * kCell);
            int w = 0;
            int s = 0;
            for (int x = cell * kCell; x < end; ++x) {
                const int above = std::max(0, edge[x] - floor);
                w += above;
                s += above * (light[x] + dark[x]);
            }
            weight[cell] += w;
            sum[cell] += s;
        }
    }
    return evidence;
}

// The mean middle of the edges around every cell; far ones count where there are no near ones. 0 where
// there are none at all.
Levels Thresholds(const Evidence& evidence, int window) {
    const int columns = evidence.weight.Width();
    const int rows = evidence.weight.Height();
    Plane<double> weight(columns, rows), sum(columns, rows);
    double share = 1;
    for (double side = static_cast<double>(window) / kCell;; side *= kWiden, share *= kFarWeight) {
        const int odd = static_cast<int>(side) | 1;
        AddMeans(evidence.weight, odd, share, weight);
        AddMeans(evidence.sum, odd, share, sum);
        if (side > std::max(columns, rows)) break;
    }
    Levels thresholds(columns, rows);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const double w = weight.Row(y)[x];
            if (w > kNoEdges) thresholds.Row(y)[x] = static_cast<std::uint8_t>(sum.Row(y)[x] / (2 * w) + 0.5);
        }
    }
    return thresholds;
}

// The thresholds of a row of pixels: between the middles of the cells along straight lines.
class ThresholdRow {
  public:
    explicit ThresholdRow(const Levels& ofCells)
        : cells(ofCells),
          column(static_cast<std::size_t>(cells.Width()) + 2),
          row(kCell * (column.size() - 1)) {}

    const std::uint8_t* At(int y) {
        const int place = 2 * y + 1 + kCell;  // in halves of a pixel, from half a cell above the picture
        const std::uint8_t* above = cells.Row(std::max(0, place / kParts - 1));
        const std::uint8_t* below = cells.Row(std::min(cells.Height() - 1, place / kParts));
        const int share = place % kParts;
        for (int x = 0; x < cells.Width(); ++x) {
            column[x + 1] = static_cast<std::uint16_t>((kParts - share) * above[x] + share * below[x]);
        }
        column.front() = column[1];
        column.back() = column[column.size() - 2];
        std::uint8_t* to = row.data();
        for (std::size_t i = 0; i + 1 < column.size(); ++i) {
            for (int k = 1; k < kParts; k += 2) {
                const int sum = (kParts - k) * column[i] + k * column[i + 1];
                *to++ = static_cast<std::uint8_t>((sum + kParts * kParts / 2) / (kParts * kParts));
            }
        }
        return row.data() + kCell / 2;
    }

  private:
    static constexpr int kParts = 2 * kCell;
    const Levels& cells;
    std::vector<std::uint16_t> column;  // in parts of kParts, repeated at both ends
    std::vector<std::uint8_t> row;      // from half a cell before the picture on
};

// Makes strokes stand out: a pixel darker than both of its neighbours across in one of four directions
// becomes darker still, a lighter one between strokes lighter. Faint thin strokes then hold together. Nothing
// happens at the picture's left and right edge.
class StrokeRow {
  public:
    StrokeRow(const Levels& from, int letterHeight)
        : picture(from),
          reach(std::max(1, static_cast<int>(kReachPerHeight * letterHeight + 0.5))),
          row(static_cast<std::size_t>(from.Width())) {}

    const std::uint8_t* At(int y) {
        const std::uint8_t* middle = picture.Row(y);
        std::copy_n(middle, picture.Width(), row.data());
        const std::uint8_t* above = picture.Row(std::max(0, y - reach));
        const std::uint8_t* below = picture.Row(std::min(picture.Height() - 1, y + reach));
        for (int x = reach; x < picture.Width() - reach; ++x) {
            const int left = x - reach, right = x + reach;
            const int beside[] = {middle[left], above[x], above[left], above[right]};
            const int opposite[] = {middle[right], below[x], below[right], below[left]};
            int dark = 0, light = 255;
            for (int k = 0; k < 4; ++k) {
                dark = std::max(dark, std::min(beside[k], opposite[k]));
                light = std::min(light, std::max(beside[k], opposite[k]));
            }
            const int level = middle[x] - kDeeper * std::max(0, dark - middle[x] - kEdgeFloor) / kWhole +
                              kHigher * std::max(0, middle[x] - light - kEdgeFloor) / kWhole;
            row[x] = static_cast<std::uint8_t>(std::clamp(level, 0, 255));
        }
        return row.data();
    }

  private:
    const Levels& picture;
    int reach;  // pixels from the middle of a stroke to beside it
    std::vector<std::uint8_t> row;
};

}  // namespace

Levelled Level(const Levels& gray, int letterHeight) {
    const Levels smooth = Smoothed(gray, Smoothing(letterHeight));
    Extremes extremes = ExtremesOf(smooth);
    Levels edges(gray.Width(), gray.Height());
    for (int y = 0; y < gray.Height(); ++y) {
        const std::uint8_t* light = extremes.lightest.Row(y);
        const std::uint8_t* dark = extremes.darkest.Row(y);
        std::uint8_t* edge = edges.Row(y);
        for (int x = 0; x < gray.Width(); ++x) edge[x] = static_cast<std::uint8_t>(light[x] - dark[x]);
    }
    const int window = std::max(kWindow, static_cast<int>(kWindowPerHeight * letterHeight));
    const Levels thresholds = Thresholds(Gather(extremes, edges), window);
    Levels picture = std::move(extremes.darkest);  // its room
    extremes = {};
    ThresholdRow between(thresholds);
    StrokeRow strokes(smooth, letterHeight);
    for (int y = 0; y < gray.Height(); ++y) {
        const std::uint8_t* threshold = between.At(y);
        const std::uint8_t* row = strokes.At(y);
        std::uint8_t* to = picture.Row(y);
        for (int x = 0; x < gray.Width(); ++x) {
            const int level = kMiddle + kSteepness * (row[x] - threshold[x]);
            to[x] = static_cast<std::uint8_t>(std::clamp(level, 0, 255));
        }
    }
    return {std::move(picture), std::move(edges)};
}

}  // namespace host
