// SPDX-License-Identifier: MIT
#include "automatic/Filters.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "picture/EveryProcessor.h"

namespace host {
namespace {

constexpr int kOne = 256;           // the sum of a Gaussian's weights
constexpr int kMaxRadius = 24;      // of a Gaussian, in pixels
constexpr double kReachOfBell = 3;  // deviations beyond which a Gaussian is cut off

// Half a bell, from its middle outwards; both halves sum up to kOne.
struct Bell {
    int radius;
    std::array<std::uint16_t, kMaxRadius + 1> weights;
};

Bell BellOf(double deviation) {
    Bell bell = {std::clamp(static_cast<int>(std::ceil(kReachOfBell * deviation)), 1, kMaxRadius), {}};
    std::array<double, kMaxRadius + 1> heights;
    double sum = 0;
    for (int i = 0; i <= bell.radius; ++i) {
        heights[i] = std::exp(-0.5 * i * i / (deviation * deviation));
        sum += i == 0 ? heights[i] : 2 * heights[i];
    }
    int rest = kOne;
    for (int i = bell.radius; i > 0; --i) {
        bell.weights[i] = static_cast<std::uint16_t>(std::lround(kOne * heights[i] / sum));
        rest -= 2 * bell.weights[i];
    }
    bell.weights[0] = static_cast<std::uint16_t>(rest);
    while (bell.radius > 1 && bell.weights[bell.radius] == 0) --bell.radius;
    return bell;
}

// One row's column sums, 7 bits behind the point, from begin on, repeated at both ends.
void SmoothDown(const Levels& picture, int y, const Bell& bell, std::vector<std::uint16_t>& sums) {
    const int width = picture.Width();
    std::uint16_t* sum = sums.data() + bell.radius;
    const std::uint8_t* middle = picture.Row(y);
    for (int x = 0; x < width; ++x) sum[x] = static_cast<std::uint16_t>(bell.weights[0] * middle[x]);
    for (int k = 1; k <= bell.radius; ++k) {
        const std::uint8_t* above = picture.Row(std::max(0, y - k));
        const std::uint8_t* below = picture.Row(std::min(picture.Height() - 1, y + k));
        const std::uint16_t weight = bell.weights[k];
        for (int x = 0; x < width; ++x)
            sum[x] = static_cast<std::uint16_t>(sum[x] + weight * (above[x] + below[x]));
    }
    for (int x = 0; x < width; ++x) sum[x] = static_cast<std::uint16_t>((sum[x] + 1) >> 1);
    std::fill_n(sums.data(), bell.radius, sum[0]);
    std::fill_n(sum + width, bell.radius, sum[width - 1]);
}

}  // namespace

Levels Smoothed(const Levels& picture, double deviation) {
    const Bell bell = BellOf(deviation);
    const int width = picture.Width();
    Levels result(width, picture.Height());
    std::vector<std::uint16_t> sums(static_cast<std::size_t>(width) + 2 * bell.radius);
    std::vector<std::uint32_t> row(static_cast<std::size_t>(width));
    for (int y = 0; y < picture.Height(); ++y) {
        SmoothDown(picture, y, bell, sums);
        const std::uint16_t* sum = sums.data() + bell.radius;
        for (int x = 0; x < width; ++x) row[x] = std::uint32_t{bell.weights[0]} * sum[x];
        for (int k = 1; k <= bell.radius; ++k) {
            const std::uint16_t weight = bell.weights[k];
            for (int x = 0; x < width; ++x) {
                // Both are below 2^15, so that the product takes 16 bits by 16.
                const auto pair = static_cast<std::uint16_t>(sum[x - k] + sum[x + k]);
                row[x] += std::uint32_t{weight} * pair;
            }
        }
        std::uint8_t* to = result.Row(y);
        for (int x = 0; x < width; ++x) to[x] = static_cast<std::uint8_t>((row[x] + (1u << 14)) >> 15);
    }
    return result;
}

RowExtremes::RowExtremes(int width) : low(static_cast<std::size_t>(width) + 2), high(low.size()) {}

HOST_FOR_EVERY_PROCESSOR void RowExtremes::Find(const std::uint8_t* above, const std::uint8_t* middle,
                                                const std::uint8_t* below, std::uint8_t* darkest,
                                                std::uint8_t* lightest) {
    const int width = static_cast<int>(low.size()) - 2;
    std::uint8_t *const lows = low.data(), *const highs = high.data();
    for (int x = 0; x < width; ++x) {
        lows[x + 1] = std::min(std::min(above[x], below[x]), middle[x]);
        highs[x + 1] = std::max(std::max(above[x], below[x]), middle[x]);
    }
    lows[0] = lows[1];
    highs[0] = highs[1];
    lows[width + 1] = lows[width];
    highs[width + 1] = highs[width];
    for (int x = 0; x < width; ++x) {
        darkest[x] = std::min(std::min(lows[x], lows[x + 2]), lows[x + 1]);
        lightest[x] = std::max(std::max(highs[x], highs[x + 2]), highs[x + 1]);
    }
}

Extremes ExtremesOf(const Levels& picture) {
    Extremes result = {Levels(picture.Width(), picture.Height()), Levels(picture.Width(), picture.Height())};
    RowExtremes rows(picture.Width());
    for (int y = 0; y < picture.Height(); ++y) {
        rows.Find(picture.Row(std::max(0, y - 1)), picture.Row(y),
                  picture.Row(std::min(picture.Height() - 1, y + 1)), result.darkest.Row(y),
                  result.lightest.Row(y));
    }
    return result;
}

void AddMeans(const Plane<double>& values, int side, double share, Plane<double>& to) {
    const int reach = side / 2;
    const int width = values.Width();
    const auto row = [&values](int y) { return values.Row(std::clamp(y, 0, values.Height() - 1)); };
    const double factor = share / (static_cast<double>(side) * side);
    std::vector<double> columns(static_cast<std::size_t>(width));  // sums of side rows
    const auto column = [&columns, width](int x) { return columns[std::clamp(x, 0, width - 1)]; };
    for (int y = -reach; y < reach; ++y) {
        for (int x = 0; x < width; ++x) columns[x] += row(y)[x];
    }
    for (int y = 0; y < values.Height(); ++y) {
        const double* enters = row(y + reach);
        for (int x = 0; x < width; ++x) columns[x] += enters[x];
        double sum = 0;
        for (int x = -reach; x < reach; ++x) sum += column(x);
        for (int x = 0; x < width; ++x) {
            sum += column(x + reach);
            to.Row(y)[x] += factor * sum;
            sum -= column(x - reach);
        }
        const double* leaves = row(y - reach);
        for (int x = 0; x < width; ++x) columns[x] -= leaves[x];
    }
}

}  // namespace host
