// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "image/Plane.h"
#include "regions/Finishing.h"
#include "regions/HistogramClass.h"
#include "regions/PageFindings.h"
#include "regions/RegionPasses.h"

namespace tavrix {

// Where the rules of the edge-guided method and those of the line method measure differently.
struct RuleFamily {
    double lightFactor;     // mostly dark: light pixels times this are fewer than dark ones
    double darkTextShare;   // of the pixels that are not white, for the dark ones to be text
    int noDarkMean;         // the mean of the dark bins when they are empty
    Finish whenMostlyDark;  // a region whose threshold came out mostly dark
};
inline constexpr RuleFamily kEdgeFamily{1.1, 0.47, 0, Finish::kLeave};
inline constexpr RuleFamily kLineFamily{1.08, 0.55, -1, Finish::kInvert};

// Shares of a region's area.
struct Tones {
    float dark;       // bins 0..99
    float notBright;  // bins 0..127
};

// What a region's tones make it. Every rule has a function for each class.
enum class ToneClass {
    kBlank = 0,     // hardly a dark pixel
    kText = 1,      // dark strokes on a brighter ground
    kHalfDark = 2,  // as much dark as bright
    kDark = 3,      // mostly dark, or in between all over
};

// The planes that a rule works with, all of the page's shape.
struct RulePlanes {
    ConstPlane gray;
    Plane scratch;
    Plane result;  // 0 black, 255 white, 1 and 254 the same for good
};

// One rectangle of a page in the hands of a rule, with the histogram of the plane counted last: at first
// that of the gray page.
class Region {
  public:
    Region(const RuleFamily& family, const RulePlanes& planes, const Rect& rect);

    // grayIsDark: text on a ground as dark as gray counts as dark, too.
    ToneClass Classify(bool grayIsDark) const;

    void CountGray() { Count(gray); }
    // Of the histogram.
    const std::uint32_t* Histogram() const { return histogram.data(); }
    HistogramShares Shares() const { return SharesOf(histogram.data()); }
    int Isodata() const;
    int Otsu(int end = 256) const;  // of the bins below end
    int DarkMean() const;
    // Otsu's threshold of the bins below the mean of dark text, where there is such text.
    std::optional<int> DarkTextOtsu() const;

    // Passes over the rectangle.
    Verdict Threshold(const ConstPlane& source, const Plane& target, int threshold, Earlier earlier) const;
    Verdict ThresholdGray(int threshold, Earlier earlier) const {  // into the result
        return Threshold(gray, result, threshold, earlier);
    }
    void Smooth(const ConstPlane& source, const Plane& target);                 // and count
    void Sharpen(const ConstPlane& source, const Plane& target, float factor);  // and count
    // Keeps of the result's black what is dark in the smoothed page as well, up to so many levels above its
    // isodata threshold. Uses scratch.
    void MergeSmoothed(int above);

    // What is to be done after a threshold with this verdict.
    Finish FinishOf(Verdict verdict, Finish otherwise = Finish::kFillAndMark) const {
        return verdict == Verdict::kMostlyDark ? family.whenMostlyDark : otherwise;
    }

    const RuleFamily& family;
    const ConstPlane gray;
    const Plane scratch, result;
    const Rect rect;
    Tones tones;  // of the gray page

  private:
    void Count(const ConstPlane& plane) { RegionHistogram(plane, rect, histogram.data()); }

    std::array<std::uint32_t, 256> histogram;
};

inline constexpr int kHighestThreshold = 250;

// A threshold times a factor, truncated.
constexpr int Scaled(int threshold, double factor) {
    return static_cast<int>(threshold * factor);
}

// A blank region, whatever the rule: Otsu's threshold, and nothing to fill.
Finish BinarizeBlank(const Region& region);

}  // namespace tavrix
