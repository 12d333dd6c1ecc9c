// SPDX-License-Identifier: MIT
#include "automatic/LostText.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace host {
namespace {

constexpr int kShortSide = 96;           // pixels: a picture with a shorter one holds no text to lose
constexpr double kNearlyBlank = 0.0005;  // of the pixels are black
constexpr double kMostlyBlack = 0.5;
constexpr int kCell = 8;           // pixels: edges and ink are compared by cells of that size
constexpr int kStrongEdge = 60;    // levels between the lightest and the darkest of 3 x 3 neighbours
constexpr int kEdgePixels = 6;     // in a cell, from which on it should hold ink
constexpr int kEnoughCells = 40;   // fewer tell nothing
constexpr double kMuchLess = 0.5;  // of the cells with edges hold no ink

// Cells in which strong edges cover some pixels.
cv::Mat CellsWithEdges(const cv::Mat& gray) {
    cv::Mat lightest, darkest;
    const cv::Mat neighbours = cv::Mat::ones(3, 3, CV_8U);
    cv::dilate(gray, lightest, neighbours);
    cv::erode(gray, darkest, neighbours);
    const cv::Mat strong = (lightest - darkest) >= kStrongEdge;
    cv::Mat cells;
    cv::resize(strong, cells, {(gray.cols + kCell - 1) / kCell, (gray.rows + kCell - 1) / kCell}, 0, 0,
               cv::INTER_AREA);
    return cells >= 255 * kEdgePixels / (kCell * kCell);
}

// Cells of the gray picture's grid, by stored rows, that have ink in the result.
cv::Mat CellsWithInk(const HostImage& bits, const cv::Size& cells, int scale) {
    cv::Mat ink = cv::Mat::zeros(cells, CV_8U);
    const int side = kCell * scale;
    for (int y = 0; y < bits.Height(); ++y) {
        const std::uint8_t* row = bits.Record().bits + bits.RowBytes() * static_cast<std::size_t>(y);
        std::uint8_t* cell = ink.ptr(std::min(cells.height - 1, y / side));
        for (int x = 0; x < bits.Width(); x += 8) {
            const int valid = std::min(8, bits.Width() - x);
            if ((row[x / 8] | 0xFF >> valid) != 0xFF) cell[std::min(cells.width - 1, x / side)] = 255;
        }
    }
    return ink;
}

}  // namespace

std::vector<std::string> WarningsFor(const HostImage& gray, const HostImage& bits) {
    std::vector<std::string> warnings;
    if (std::min(gray.Width(), gray.Height()) < kShortSide) return warnings;
    const double black = BlackShare(bits);
    if (black < kNearlyBlank) warnings.emplace_back("the result is nearly blank");
    if (black > kMostlyBlack) warnings.emplace_back("the result is mostly black");
    const cv::Mat stored(gray.Height(), gray.Width(), CV_8UC1, gray.Record().bits, gray.RowBytes());
    const cv::Mat edges = CellsWithEdges(stored);
    cv::Mat ink = CellsWithInk(bits, edges.size(), std::max(1, bits.Width() / gray.Width()));
    cv::dilate(ink, ink, cv::Mat::ones(3, 3, CV_8U));
    const int all = cv::countNonZero(edges);
    const int bare = cv::countNonZero(edges & ~ink);
    if (all >= kEnoughCells && bare > kMuchLess * all) {
        warnings.push_back(
            "much less ink than other modes find: " + std::to_string(std::lround(100.0 * bare / all)) +
            " % of the sharp edges have none");
    }
    return warnings;
}

}  // namespace host
