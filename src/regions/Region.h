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
    Plane result;  // 0 black, 255 white, 1 and 254 the same for good
    // Only for gray pages of the line method, whose rule sees what earlier lines left beyond its own: takes
    // the sharpened page. Else without pixels.
    Plane sharpened;
};

// One rectangle of a page in the hands of a rule, with the histogram of what was counted last: at first the
// gray page. Smoothed and sharpened pages are worked out row by row where they are read, or take the place of
// the result.
class Region {
  public:
    Region(const RuleFamily& family, const RulePlanes& planes, const Rect& rect);

    // grayIsDark: text on a ground as dark as gray counts as dark, too.
    ToneClass Classify(bool grayIsDark) const;

    // Of the histogram.
    const std::uint32_t* Histogram() const { return histogram.data(); }
    HistogramShares Shares() const { return SharesOf(histogram.data()); }
    int Isodata() const;
    int Otsu(int end = 256) const;  // of the bins below end
    int DarkMean() const;
    // Otsu's threshold of the bins below the mean of dark text, where there is such text.
    std::optional<int> DarkTextOtsu() const;
    // What overwriting with the counted page at this threshold would give.
    Verdict VerdictAt(int threshold) const;

    // Into the result.
    Verdict ThresholdGray(int threshold, Earlier earlier) const;
    Verdict ThresholdSharpened(float factor, int threshold, Earlier earlier) const;
    // Keeps of the result's black what is dark in the smoothed page as well, up to so many levels above its
    // isodata threshold. Counts the smoothed page.
    void MergeSmoothed(int above);

    // Counts the sharpened page.
    void Sharpen(float factor);
    // Put a page in place of the result and count it.
    void SmoothInPlace();
    void SharpenInPlace(float factor);
    void SmoothSharpenedInPlace(float factor);  // where the sharpened page has a plane
    // The result, which is a page so far, sharpened. The rectangle is the whole page.
    void SharpenResult(float factor);
    Verdict ThresholdResult(int threshold, Earlier earlier) const;

    // What is to be done after a threshold with this verdict.
    Finish FinishOf(Verdict verdict, Finish otherwise = Finish::kFillAndMark) const {
        return verdict == Verdict::kMostlyDark ? family.whenMostlyDark : otherwise;
    }

    const RuleFamily& family;
    const ConstPlane gray;
    const Plane result, sharpened;
    const Rect rect;
    Tones tones;  // of the gray page

  private:
    // Works a page's rows out of another one, into the target where there is one, and counts them.
    template <class Filter>
    void Derive(const ConstPlane& source, const Filter& filter, const Plane& target);

    const Rect inside;  // the part of rect on the page
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
