// SPDX-License-Identifier: MIT
#include "straighten/TextDirection.h"

#include <leptonica/allheaders.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "straighten/Uprightness.h"

namespace host {
namespace {

constexpr double kLongSide = 1600;    // pixels; more does not make directions clearer
constexpr double kLetterHeight = 24;  // pixels, to find angles
constexpr double kMostSide = 2400;    // pixels, to get there
constexpr int kSurroundings = 41;     // pixels
constexpr int kContrast = 20;         // gray levels between print and its surroundings
constexpr int kLeastLetters = 12;     // that show which way text runs
constexpr double kMoreLetters = 1.5;  // along it than across
constexpr double kMinSurplus = 2.5;   // of letters for upright or upside down, in standard deviations...
constexpr double kUpsideDown = 4;     // ...to turn what may be right as it is
constexpr float kMinConfidence = 3;   // of an angle: the score of the best over that of the worst
constexpr float kMostDegrees = 12;
constexpr double kLeastDegrees = 0.15;  // less is not seen

struct PixDeleter {
    void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using Pix = std::unique_ptr<PIX, PixDeleter>;

// What is darker or lighter than its surroundings.
cv::Mat1b InkOf(const cv::Mat1b& gray, bool isLight) {
    cv::Mat1b surroundings, ink;
    cv::boxFilter(gray, surroundings, -1, {kSurroundings, kSurroundings});
    cv::subtract(isLight ? gray : surroundings, isLight ? surroundings : gray, ink);
    return cv::Mat1b(ink > kContrast);
}

// What is too large for letters and words that touch: pictures, and the edges of sheets, which may run
// otherwise than the text.
void DropLarge(cv::Mat1b& ink) {
    constexpr double kMostLong = 12 * kLetterHeight, kMostWide = 4 * kLetterHeight;
    cv::Mat1i labels, facts;
    cv::Mat1d centres;
    cv::connectedComponentsWithStats(ink, labels, facts, centres, 8, CV_32S);
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            const int w = facts(labels(y, x), cv::CC_STAT_WIDTH), h = facts(labels(y, x), cv::CC_STAT_HEIGHT);
            if (std::max(w, h) > kMostLong || std::min(w, h) > kMostWide) ink(y, x) = 0;
        }
    }
}

Pix PixOf(const cv::Mat1b& ink) {
    Pix pix(pixCreate(ink.cols, ink.rows, 1));
    if (!pix) throw std::bad_alloc();
    for (int y = 0; y < ink.rows; ++y) {
        l_uint32* line = pixGetData(pix.get()) + static_cast<std::ptrdiff_t>(y) * pixGetWpl(pix.get());
        for (int x = 0; x < ink.cols; ++x) {
            if (ink(y, x) != 0) SET_DATA_BIT(line, x);
        }
    }
    return pix;
}

// The typical height of what may be letters.
double LetterHeight(const cv::Mat1b& ink) {
    constexpr int kLeastHeight = 5, kMostHeight = 120, kLeastArea = 12;  // pixels
    constexpr int kMostWidth = 3, kMostSlimness = 6;                     // times the other side
    cv::Mat1i labels, facts;
    cv::Mat1d centres;
    const int count = cv::connectedComponentsWithStats(ink, labels, facts, centres, 8, CV_32S);
    std::vector<int> heights;
    for (int i = 1; i < count; ++i) {
        const int w = facts(i, cv::CC_STAT_WIDTH), h = facts(i, cv::CC_STAT_HEIGHT);
        if (h >= kLeastHeight && h <= kMostHeight && w < kMostWidth * h && h < kMostSlimness * w &&
            facts(i, cv::CC_STAT_AREA) >= kLeastArea)
            heights.push_back(h);
    }
    if (heights.empty()) return kLetterHeight;
    const auto middle = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

// The picture at a size at which letters have the height wanted.
cv::Mat1b Normalized(const cv::Mat1b& gray) {
    const double reduction = std::min(1.0, kLongSide / std::max(gray.cols, gray.rows));
    cv::Mat1b reduced = gray, result;
    if (reduction < 1) cv::resize(gray, reduced, {}, reduction, reduction, cv::INTER_AREA);
    const double most = std::max(1.0, kMostSide / std::max(reduced.cols, reduced.rows));
    const double scale = std::clamp(kLetterHeight / LetterHeight(InkOf(reduced, false)), 1 / most, most);
    cv::resize(reduced, result, {}, scale, scale, scale < 1 ? cv::INTER_AREA : cv::INTER_CUBIC);
    return result;
}

HostImage ImageOf(const cv::Mat1b& gray) {
    HostImage image(gray.cols, gray.rows, 8);
    for (int y = 0; y < gray.rows; ++y) std::copy_n(gray.ptr(y), gray.cols, image.TopRow(y));
    return image;
}

// Text runs along where more of it stands in rows. A picture that is upright is worse off than one on its
// side after a wrong turn, so it takes more to turn that.
int QuartersOf(const cv::Mat1b& gray) {
    cv::Mat1b sideways;
    cv::rotate(gray, sideways, cv::ROTATE_90_CLOCKWISE);
    const Uprightness level = UprightnessOf(ImageOf(gray)), side = UprightnessOf(ImageOf(sideways));
    if (side.letters >= kLeastLetters && side.letters > kMoreLetters * level.letters) {
        if (side.surplus >= kMinSurplus) return 1;
        return side.surplus <= -kMinSurplus ? 3 : 0;
    }
    const bool isLevel = level.letters >= kLeastLetters && level.letters > kMoreLetters * side.letters;
    return isLevel && level.surplus <= -kUpsideDown ? 2 : 0;
}

double DegreesOf(const Pix& dark, const Pix& light) {
    constexpr int kCoarse = 4, kFine = 2;  // reductions of the two searches
    constexpr float kSweepStep = 1, kFinest = 0.01f;
    float best = 0, degrees = 0;
    for (const Pix* ink : {&dark, &light}) {
        float angle = 0, confidence = 0, score = 0;
        if (pixFindSkewSweepAndSearchScore(ink->get(), &angle, &confidence, &score, kCoarse, kFine, 0,
                                           kMostDegrees, kSweepStep, kFinest) != 0)
            continue;
        if (confidence <= best) continue;
        best = confidence;
        degrees = angle;
    }
    return best >= kMinConfidence && std::fabs(degrees) >= kLeastDegrees ? degrees : 0;
}

}  // namespace

TextDirection FindTextDirection(const cv::Mat1b& gray) {
    // Pictures without text are no error.
    [[maybe_unused]] static const int severityBefore = setMsgSeverity(L_SEVERITY_NONE);
    const cv::Mat1b picture = Normalized(gray);
    cv::Mat1b darkInk = InkOf(picture, false), lightInk = InkOf(picture, true);
    DropLarge(darkInk);
    DropLarge(lightInk);
    Pix dark = PixOf(darkInk), light = PixOf(lightInk);
    const int quarters = QuartersOf(gray);
    if (quarters != 0) {
        dark.reset(pixRotateOrth(dark.get(), quarters));
        light.reset(pixRotateOrth(light.get(), quarters));
    }
    return {quarters, DegreesOf(dark, light)};
}

}  // namespace host
