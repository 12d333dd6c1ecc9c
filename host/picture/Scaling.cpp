// SPDX-License-Identifier: MIT
#include "picture/Scaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "picture/Picture.h"

namespace host {
namespace {

constexpr int kOne = 1 << 14;        // the sum of the weights of a pixel's sources
constexpr int kRowShift = 8;         // leaves rows 6 bits behind the point...
constexpr int kPixelShift = 14 + 6;  // ...which the pixels drop with the weights
constexpr int kRowsKept = 4;         // bicubic pixels share their source rows with their neighbours
constexpr double kCubic = -0.75;     // the slope of the bicubic kernel at 1

// Where the pixels of a scaled row or column come from: count neighbours of the source, from first on.
struct Sources {
    int count;
    std::vector<int> first;             // may lie outside, where the edge pixel goes on
    std::vector<std::int16_t> weights;  // count for every pixel, their sum kOne

    const std::int16_t* WeightsOf(int pixel) const {
        return weights.data() + static_cast<std::size_t>(pixel) * static_cast<std::size_t>(count);
    }
};

double CubicWeight(double distance) {
    const double d = std::fabs(distance);
    if (d <= 1) return ((kCubic + 2) * d - (kCubic + 3)) * d * d + 1;
    if (d < 2) return ((d - 5) * d + 8) * d * kCubic - 4 * kCubic;
    return 0;
}

Sources CubicSources(int from, int to) {
    Sources sources = {4, std::vector<int>(to), std::vector<std::int16_t>(std::size_t{4} * to)};
    for (int i = 0; i < to; ++i) {
        const double place = (i + 0.5) * from / to - 0.5;
        const int left = static_cast<int>(std::floor(place));
        sources.first[i] = left - 1;
        std::int16_t* weights = sources.weights.data() + std::size_t{4} * i;
        int rest = kOne;
        for (int k : {0, 2, 3}) {
            weights[k] = static_cast<std::int16_t>(std::lround(kOne * CubicWeight(place - (left - 1 + k))));
            rest -= weights[k];
        }
        weights[1] = static_cast<std::int16_t>(rest);
    }
    return sources;
}

// Every pixel is the mean of the area that it covers. Weights are differences of rounded sums, so that
// they add up.
Sources AreaSources(int from, int to) {
    const double side = static_cast<double>(from) / to;
    const int count = static_cast<int>(std::ceil(side)) + 1;
    Sources sources = {count, std::vector<int>(to),
                       std::vector<std::int16_t>(static_cast<std::size_t>(count) * to)};
    for (int i = 0; i < to; ++i) {
        const double begin = i * side;
        sources.first[i] = static_cast<int>(begin);
        long before = 0;
        for (int k = 0; k < count; ++k) {
            const double covered = std::clamp(sources.first[i] + k + 1 - begin, 0.0, side);
            const long sum = std::lround(kOne * covered / side);
            sources.weights[static_cast<std::size_t>(count) * i + k] =
                static_cast<std::int16_t>(sum - before);
            before = sum;
        }
    }
    return sources;
}

Sources SourcesOf(int from, int to) {
    return to > from ? CubicSources(from, to) : AreaSources(from, to);
}

// Scales rows of one picture, and keeps the last ones.
class RowScaler {
  public:
    RowScaler(const HostImage& source, int width)
        : image(source),
          channels(source.BitCount() / 8),
          along(SourcesOf(source.Width(), width)),
          padded(static_cast<std::size_t>(channels) * (source.Width() + 2 * along.count)) {
        numbers.fill(-1);
        for (auto& row : rows) row.resize(static_cast<std::size_t>(channels) * width);
    }

    // 6 bits behind the point. Rows outside are those at the edge.
    const std::int16_t* Row(int y) {
        y = std::clamp(y, 0, image.Height() - 1);
        const std::size_t slot = static_cast<std::size_t>(y) % kRowsKept;
        if (numbers[slot] != y) Scale(y, rows[slot].data());
        numbers[slot] = y;
        return rows[slot].data();
    }

  private:
    void Scale(int y, std::int16_t* to) {
        const std::uint8_t* row = image.TopRow(y);
        const int width = image.Width();
        for (int x = -along.count; x < width + along.count; ++x) {
            std::copy_n(row + channels * std::clamp(x, 0, width - 1), channels,
                        padded.data() + channels * (x + along.count));
        }
        for (std::size_t i = 0; i < along.first.size(); ++i) {
            const std::int16_t* weights = along.WeightsOf(static_cast<int>(i));
            const std::uint8_t* from = padded.data() + channels * (along.first[i] + along.count);
            for (int c = 0; c < channels; ++c, ++from, ++to) {
                int sum = 1 << (kRowShift - 1);
                for (int k = 0; k < along.count; ++k) sum += weights[k] * from[channels * k];
                *to = static_cast<std::int16_t>(sum >> kRowShift);
            }
        }
    }

    const HostImage& image;
    int channels;
    Sources along;
    std::vector<std::uint8_t> padded;
    std::array<std::vector<std::int16_t>, kRowsKept> rows;
    std::array<int, kRowsKept> numbers;
};

int ScaledSide(int side, double factor) {
    const double scaled = std::max(1.0, std::round(side * factor));
    if (scaled > static_cast<double>(kMaxSide)) {
        throw PictureError(PictureError::kFailed, "a side of " + std::to_string(side) +
                                                      " pixels cannot be enlarged: at most " +
                                                      std::to_string(kMaxSide) + " pixels are possible");
    }
    return static_cast<int>(scaled);
}

}  // namespace

HostImage Scaled(HostImage image, double factor) {
    if (image.BitCount() == 1) image = ToGray(std::move(image));
    if (factor == 1) return image;
    HostImage scaled(ScaledSide(image.Width(), factor), ScaledSide(image.Height(), factor), image.BitCount());
    RowScaler source(image, scaled.Width());
    const Sources down = SourcesOf(image.Height(), scaled.Height());
    std::vector<std::int32_t> sums(static_cast<std::size_t>(scaled.BitCount() / 8) * scaled.Width());
    for (int y = 0; y < scaled.Height(); ++y) {
        std::fill(sums.begin(), sums.end(), 1 << (kPixelShift - 1));
        for (int k = 0; k < down.count; ++k) {
            const std::int16_t weight = down.WeightsOf(y)[k];
            if (weight == 0) continue;
            const std::int16_t* row = source.Row(down.first[y] + k);
            for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += weight * row[i];
        }
        std::uint8_t* to = scaled.TopRow(y);
        for (std::size_t i = 0; i < sums.size(); ++i) {
            to[i] = static_cast<std::uint8_t>(std::clamp(sums[i] >> kPixelShift, 0, 255));
        }
    }
    return scaled;
}

}  // namespace host
