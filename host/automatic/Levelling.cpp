// SPDX-License-Identifier: MIT
#include "automatic/Levelling.h"

#include <algorithm>
#include <array>
#include <opencv2/imgproc.hpp>

namespace host {
namespace {

constexpr int kCell = 4;         // pixels: the threshold is worked out on a grid of such cells
constexpr int kNoiseBlock = 8;   // cells: noise is measured in blocks of that size
constexpr int kQuietShare = 5;   // the calmest fifth of a block shows its noise
constexpr int kNoiseFactor = 3;  // edges count from so much noise on...
constexpr int kEdgeFloor = 6;    // ...and so many levels more
constexpr int kWindow = 41;      // pixels: where letters are small or unknown
constexpr double kWindowPerHeight = 1.6;
constexpr double kWiden = 2.5;       // every further window is so much wider...
constexpr double kFarWeight = 0.03;  // ...and counts so much less
constexpr int kSteepness = 8;        // of the levelled picture: shades that matter end up black or white

// Smoothing against grain, in the standard deviation of a Gaussian; small type bears little of it.
double Smoothing(int letterHeight) {
    return letterHeight == 0 ? 0.8 : std::clamp(0.03 * letterHeight, 0.3, 2.5);
}

// Noise of every block: the edge strength that its calmest fifth stays below.
cv::Mat MeasureNoise(const cv::Mat& edges) {
    constexpr int kSide = kNoiseBlock * kCell;
    cv::Mat noise((edges.rows + kSide - 1) / kSide, (edges.cols + kSide - 1) / kSide, CV_32F);
    for (int by = 0; by < noise.rows; ++by) {
        for (int bx = 0; bx < noise.cols; ++bx) {
            std::array<int, 256> histogram = {};
            const int bottom = std::min(edges.rows, (by + 1) * kSide);
            const int right = std::min(edges.cols, (bx + 1) * kSide);
            for (int y = by * kSide; y < bottom; ++y) {
                const std::uint8_t* row = edges.ptr(y);
                for (int x = bx * kSide; x < right; ++x) ++histogram[row[x]];
            }
            int rest = (bottom - by * kSide) * (right - bx * kSide) / kQuietShare;
            int level = 0;
            while (rest >= histogram[static_cast<std::size_t>(level)])
                rest -= histogram[static_cast<std::size_t>(level++)];
            noise.at<float>(by, bx) = static_cast<float>(level);
        }
    }
    cv::blur(noise, noise, {3, 3});
    return noise;
}

// The edges of every cell above the noise, and the sum of their middles.
struct Evidence {
    cv::Mat weight, sum;
};

Evidence Gather(const cv::Mat& lightest, const cv::Mat& darkest, const cv::Mat& edges) {
    const cv::Mat noise = MeasureNoise(edges);
    const cv::Size cells((edges.cols + kCell - 1) / kCell, (edges.rows + kCell - 1) / kCell);
    Evidence evidence = {cv::Mat::zeros(cells, CV_32F), cv::Mat::zeros(cells, CV_32F)};
    for (int y = 0; y < edges.rows; ++y) {
        const std::uint8_t* edge = edges.ptr(y);
        const std::uint8_t* light = lightest.ptr(y);
        const std::uint8_t* dark = darkest.ptr(y);
        const float* quiet = noise.ptr<float>(y / (kNoiseBlock * kCell));
        float* weight = evidence.weight.ptr<float>(y / kCell);
        float* sum = evidence.sum.ptr<float>(y / kCell);
        for (int cell = 0; cell < cells.width; ++cell) {
            const int floor = static_cast<int>(kNoiseFactor * quiet[cell / kNoiseBlock]) + kEdgeFloor;
            const int end = std::min(edges.cols, (cell + 1) * kCell);
            int w = 0;
            int s = 0;
            for (int x = cell * kCell; x < end; ++x) {
                const int above = std::max(0, edge[x] - floor);
                w += above;
                s += above * (light[x] + dark[x]);
            }
            weight[cell] += static_cast<float>(w);
            sum[cell] += static_cast<float>(s) / 2;
        }
    }
    return evidence;
}

// The mean middle of the edges around every cell; far ones count where there are no near ones. 0 where
// there are none at all.
cv::Mat Thresholds(const Evidence& evidence, int window) {
    cv::Mat weight = cv::Mat::zeros(evidence.weight.size(), CV_32F);
    cv::Mat sum = weight.clone();
    const int longer = std::max(weight.cols, weight.rows);
    double share = 1;
    for (double side = static_cast<double>(window) / kCell;; side *= kWiden, share *= kFarWeight) {
        const int odd = static_cast<int>(side) | 1;
        cv::Mat mean;
        cv::boxFilter(evidence.weight, mean, -1, {odd, odd}, {-1, -1}, true, cv::BORDER_REPLICATE);
        cv::scaleAdd(mean, share, weight, weight);
        cv::boxFilter(evidence.sum, mean, -1, {odd, odd}, {-1, -1}, true, cv::BORDER_REPLICATE);
        cv::scaleAdd(mean, share, sum, sum);
        if (side > longer) break;
    }
    cv::Mat thresholds = cv::Mat::zeros(weight.size(), CV_8U);
    for (int y = 0; y < weight.rows; ++y) {
        for (int x = 0; x < weight.cols; ++x) {
            const float w = weight.at<float>(y, x);
            if (w > 1e-6F)
                thresholds.at<std::uint8_t>(y, x) = cv::saturate_cast<std::uint8_t>(sum.at<float>(y, x) / w);
        }
    }
    return thresholds;
}

}  // namespace

Levelled Level(const cv::Mat& gray, int letterHeight) {
    cv::Mat smooth;
    cv::GaussianBlur(gray, smooth, {}, Smoothing(letterHeight));
    cv::Mat lightest, darkest, edges;
    const cv::Mat neighbours = cv::Mat::ones(3, 3, CV_8U);
    cv::dilate(smooth, lightest, neighbours);
    cv::erode(smooth, darkest, neighbours);
    cv::subtract(lightest, darkest, edges);
    const int window = std::max(kWindow, static_cast<int>(kWindowPerHeight * letterHeight));
    cv::Mat thresholds;
    cv::resize(Thresholds(Gather(lightest, darkest, edges), window), thresholds, gray.size(), 0, 0,
               cv::INTER_LINEAR);
    for (int y = 0; y < gray.rows; ++y) {
        const std::uint8_t* threshold = thresholds.ptr(y);
        std::uint8_t* row = smooth.ptr(y);
        for (int x = 0; x < gray.cols; ++x) {
            row[x] = cv::saturate_cast<std::uint8_t>(kMiddle + kSteepness * (row[x] - threshold[x]));
        }
    }
    return {smooth, edges};
}

}  // namespace host
