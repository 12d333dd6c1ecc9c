// SPDX-License-Identifier: MIT
#include "straighten/EdgeMap.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace host {
namespace {

cv::Point PixelAt(cv::Point2d place) {
    return {cvFloor(place.x), cvFloor(place.y)};
}

// What lies in the order of the values at a share of 0 to 1 of them.
template <class Values>
float Quantile(Values& values, double share) {
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(
                                         share * static_cast<double>(values.end() - values.begin() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

// The picture less its surroundings, times four: the segment detector is blind to steps of less than about
// five gray levels a pixel, and a white card on a pale desk has less.
cv::Mat1b Amplified(const cv::Mat1b& plane) {
    constexpr int kSurroundings = 61;  // pixels
    constexpr double kGain = 4, kMiddle = 128;
    cv::Mat1b ground, result;
    cv::boxFilter(plane, ground, -1, {kSurroundings, kSurroundings});
    cv::addWeighted(plane, kGain, ground, -kGain, kMiddle, result);
    return result;
}

}  // namespace

EdgeMap::EdgeMap(const cv::Mat3b& reduced) : picture(reduced) {
    MeasureStrength();
    FindSegments();
    FindMarks();
}

void EdgeMap::MeasureStrength() {
    constexpr double kBlur = 1.2;         // pixels
    constexpr float kMinStrength = 1.2f;  // gray levels a pixel
    constexpr float kAboveNoise = 3;      // times the median strength
    cv::Mat3b smooth;
    cv::GaussianBlur(picture, smooth, {0, 0}, kBlur);
    cv::Mat3f x, y;
    cv::Sobel(smooth, x, CV_32F, 1, 0, 3, 0.125);
    cv::Sobel(smooth, y, CV_32F, 0, 1, 3, 0.125);
    strength.create(picture.size());
    along.create(picture.size());
    down.create(picture.size());
    for (int row = 0; row < picture.rows; ++row) {
        for (int column = 0; column < picture.cols; ++column) {
            float best = -1;
            for (int k = 0; k < 3; ++k) {
                const float dx = x(row, column)[k], dy = y(row, column)[k], square = dx * dx + dy * dy;
                if (square <= best) continue;
                best = square;
                along(row, column) = dx;
                down(row, column) = dy;
            }
            strength(row, column) = std::sqrt(best);
        }
    }
    std::vector<float> values(strength.begin(), strength.end());
    floor = std::max(kMinStrength, kAboveNoise * Quantile(values, 0.5));
}

void EdgeMap::FindSegments() {
    const auto detector = cv::createLineSegmentDetector(cv::LSD_REFINE_STD);
    cv::Mat1b gray, redness(picture.size());
    cv::cvtColor(picture, gray, cv::COLOR_BGR2GRAY);
    std::transform(picture.begin(), picture.end(), redness.begin(), [](const cv::Vec3b& pixel) {
        return static_cast<std::uint8_t>((pixel[2] - pixel[0] + 255) / 2);
    });
    for (const cv::Mat1b& plane : {gray, Amplified(gray), Amplified(redness)}) {
        std::vector<cv::Vec4f> more;
        detector->detect(plane, more);
        segments.insert(segments.end(), more.begin(), more.end());
    }
}

void EdgeMap::FindMarks() {
    constexpr float kFaintest = 4;           // gray levels a pixel
    constexpr double kLongestStroke = 0.04;  // of the diagonal
    constexpr int kStrokeReach = 9;          // pixels across that the edge of a side fills
    constexpr int kLeast = 6;                // pixels
    cv::Mat1b isMark(strength > kFaintest);
    for (const cv::Vec4f& s : segments) {
        if (std::hypot(s[2] - s[0], s[3] - s[1]) < kLongestStroke * Diagonal()) continue;
        cv::line(isMark, {cvRound(s[0]), cvRound(s[1])}, {cvRound(s[2]), cvRound(s[3])}, 0, kStrokeReach);
    }
    cv::Mat1i labels, facts;
    cv::Mat1d centres;
    cv::connectedComponentsWithStats(isMark, labels, facts, centres, 8, CV_32S);
    for (int y = 0; y < labels.rows; ++y) {
        for (int x = 0; x < labels.cols; ++x) {
            const int label = labels(y, x);
            if (label == 0 || facts(label, cv::CC_STAT_AREA) < kLeast) continue;
            marks.push_back({cv::Point2d(x, y), strength(y, x)});
        }
    }
}

bool EdgeMap::HasEdgeNear(cv::Point2d place, cv::Point2d across) const {
    constexpr int kReach = 3;           // pixels that a side may be off
    constexpr double kParallel = 0.85;  // cosine of the angle between edge and side
    const cv::Rect all({0, 0}, picture.size());
    for (int off = -kReach; off <= kReach; ++off) {
        const cv::Point p = PixelAt(place + off * across);
        if (!all.contains(p) || strength(p) < floor) continue;
        if (std::fabs(along(p) * across.x + down(p) * across.y) > kParallel * strength(p)) return true;
    }
    return false;
}

bool EdgeMap::HasStepAt(cv::Point2d place, cv::Point2d across) const {
    constexpr int kNear = 4, kFar = 9;  // pixels from the edge at which its two sides are compared
    constexpr double kMinStep = 4;      // gray levels
    const cv::Rect all({0, 0}, picture.size());
    cv::Vec3d difference;
    int count = 0;
    for (int off = kNear; off <= kFar; ++off) {
        const cv::Point in = PixelAt(place + off * across), out = PixelAt(place - off * across);
        if (!all.contains(in) || !all.contains(out)) continue;
        difference += cv::Vec3d(picture(in)) - cv::Vec3d(picture(out));
        ++count;
    }
    return count == 0 || cv::norm(difference, cv::NORM_INF) >= kMinStep * count;
}

double EdgeMap::SupportOf(cv::Point2d from, cv::Point2d to) const {
    constexpr int kSamples = 80;
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const cv::Point2d across((from.y - to.y) / length, (to.x - from.x) / length);
    int good = 0;
    for (int i = 0; i < kSamples; ++i) {
        const cv::Point2d place = from + (to - from) * ((i + 0.5) / kSamples);
        good += HasEdgeNear(place, across) && HasStepAt(place, across);
    }
    return static_cast<double>(good) / kSamples;
}

int EdgeMap::MarksOutside(const Quad& quad) const {
    constexpr double kBand = 0.012;    // of the diagonal, on both sides of the shape's own
    constexpr double kClear = 0.9;     // quantile of the strengths inside that stands for clear print
    constexpr float kPaleness = 0.3f;  // of that strength, which the palest print has
    std::array<cv::Point2d, 4> out;    // unit vectors
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2d side = quad[(i + 1) % 4] - quad[i];
        out[i] = cv::Point2d(side.y, -side.x) / std::hypot(side.x, side.y);
    }
    std::vector<float> inside, outside;
    for (const Mark& mark : marks) {
        double beyond = (mark.place - quad[0]).dot(out[0]);
        for (std::size_t i = 1; i < 4; ++i) beyond = std::max(beyond, (mark.place - quad[i]).dot(out[i]));
        if (beyond < -kBand * Diagonal()) inside.push_back(mark.strength);
        if (beyond > kBand * Diagonal()) outside.push_back(mark.strength);
    }
    const float limit = inside.empty() ? 0 : kPaleness * Quantile(inside, kClear);
    return static_cast<int>(
        std::count_if(outside.begin(), outside.end(), [limit](float value) { return value > limit; }));
}

}  // namespace host
