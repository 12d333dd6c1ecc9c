// SPDX-License-Identifier: MIT
// The three region rules of the edge-guided binarization.
#include <algorithm>
#include <array>

#include "regions/EdgeRegionBinarizer.h"
#include "regions/RegionPasses.h"

namespace tavrix {
namespace {

constexpr double kLightFactor = 1.1;
constexpr int kHighestThreshold = 250;
constexpr int kMark = 1;       // code of a region without gaps to fill
constexpr int kWithEdges = 3;  // added to a code
constexpr int kDarkWithEdges = 5;
constexpr bool kForce = true, kKeepBlack = false;

// One rectangle of a page, with the histogram of the buffer counted last.
class Region {
  public:
    using Byte = std::uint8_t;

    Region(const PageShape& shape, PageRect rectangle) : page(shape), rect(rectangle) {}

    void Count(const Byte* buffer) { RegionHistogram(page, rect, buffer, histogram.data()); }
    const std::uint32_t* Histogram() const { return histogram.data(); }
    int Isodata() const { return Binarizer::IsodataThreshold(histogram.data()); }
    int Otsu(int high) const { return Binarizer::OtsuThreshold(histogram.data(), 0, high); }
    int Otsu() const { return Otsu(256); }
    // Otsu's threshold of the dark text if there is such, else -1.
    int DarkTextOtsu() const {
        const int mean = EdgeRegionBinarizer::DarkMeanCheck(histogram.data(), true);
        return mean > 0 ? Otsu(mean) : -1;
    }
    int DarkMean() const { return EdgeRegionBinarizer::DarkMeanCheck(histogram.data(), false); }
    std::uint64_t DarkPixels(int lastBin) const { return SumBins(histogram.data(), 0, lastBin); }

    int Threshold(const Byte* source, Byte* target, int threshold, bool force) const {
        return ThresholdRegion(page, rect, threshold, source, target, force, kLightFactor);
    }
    void SmoothAndCount(const Byte* source, Byte* target) {
        SmoothRegion(page, rect, source, target);
        Count(target);
    }
    void SharpenAndCount(const Byte* source, Byte* target, float factor) {
        SharpenRegion(page, rect, source, target, factor);
        Count(target);
    }
    void Merge(Byte* target, const Byte* other) const { MergeRegionMasks(page, rect, target, other); }

  private:
    const PageShape page;
    const PageRect rect;
    std::array<std::uint32_t, 256> histogram;
};

// How dark a region is: the shares of its pixels in the bins 0..99 and 0..127.
struct Darkness {
    float r, q;

    Darkness(const Region& region, PageRect rect)
        : r(Share(region.DarkPixels(99), rect)), q(Share(region.DarkPixels(127), rect)) {}

  private:
    static float Share(std::uint64_t pixels, PageRect rect) {
        return static_cast<float>(pixels) / static_cast<float>(rect.Area());
    }
};

int Scaled(int threshold, double factor) {
    return static_cast<int>(threshold * factor);
}

}  // namespace

int EdgeRegionBinarizer::BinarizeRegion(PageRect rect, std::uint8_t* scratch, std::uint8_t* result,
                                        bool smoothed) {
    Region region(Page(), rect);
    region.Count(src);
    const Darkness darkness(region, rect);
    const double r = darkness.r, q = darkness.q;

    if (r <= 0.02) {
        return region.Threshold(src, result, region.Otsu(), kKeepBlack) == kMostlyDark ? kMostlyDark : kMark;
    }

    const float sharpening = r > 0.1 ? 10.0f : r >= 0.038 ? 9.8f : 9.6f;
    if (r <= 0.48 && q <= 0.6) {
        int code;
        if (darkTextHint && sharpenAllowed) {
            region.SharpenAndCount(src, scratch, sharpening);
            code = region.Threshold(scratch, result, region.Isodata() - 30, kForce);
        } else if (darkTextHint) {
            const int ofText = region.DarkTextOtsu();
            int threshold = ofText >= 0 ? ofText : region.Otsu();
            if (threshold < 50) {
                threshold += 20;
            }
            code = region.Threshold(src, result, threshold, kForce);
        } else if (sharpenAllowed) {
            region.SharpenAndCount(src, scratch, sharpening);
            const int threshold = std::min(region.Isodata() + (r > 0.1 ? 30 : 40), kHighestThreshold);
            code = region.Threshold(scratch, result, threshold, kKeepBlack);
            if (smoothed && r >= 0.038) {
                region.SmoothAndCount(src, scratch);
                region.Threshold(scratch, scratch, region.Isodata() + 15, kForce);
                region.Merge(result, scratch);
            }
        } else {
            code = region.Threshold(src, result, Scaled(region.Isodata(), 0.8), kKeepBlack);
        }
        return code;
    }

    const int code = region.Threshold(src, result, region.Isodata(), kKeepBlack);
    if (r > 0.48 && r <= 0.8 && q <= 0.8) {
        if (code == kMostlyDark) {
            return kMostlyDark;
        }
        if (r < 0.6) {
            SharpenRegion(Page(), rect, src, result, 9.8f);
            region.Count(result);
            region.Threshold(result, result, std::min(region.Isodata() + 20, kHighestThreshold), kKeepBlack);
        }
        if (smoothed) {
            region.SmoothAndCount(src, scratch);
            region.Threshold(scratch, scratch, region.Isodata() + 10, kKeepBlack);
            region.Merge(result, scratch);
        } else if (darkTextHint) {
            region.Count(src);
            const int ofText = region.DarkTextOtsu();
            region.Threshold(src, scratch, ofText >= 0 ? ofText : region.Otsu(), kKeepBlack);
            region.Merge(result, scratch);
        } else {
        }
        return 0;
    }

    if (code == kMostlyDark) {
        return kMostlyDark;
    }
    const int ofText = region.DarkTextOtsu();
    if (ofText >= 0) {
        return region.Threshold(src, result, ofText, kKeepBlack) + kWithEdges;
    }
    return region.Threshold(src, result, region.Isodata(), kKeepBlack);
}

int EdgeRegionBinarizer::BinarizeRegionAlt(PageRect rect, std::uint8_t* result, bool smoothed) {
    constexpr int kWide = 700, kHigh = 500;  // pixels
    Region region(Page(), rect);
    region.Count(src);
    const Darkness darkness(region, rect);
    const double r = darkness.r, q = darkness.q;
    HistogramShares shares;

    if (r <= 0.02) {
        return region.Threshold(src, result, region.Otsu(), kKeepBlack) == kMostlyDark ? kMostlyDark : kMark;
    }

    if (r <= 0.48 && q <= 0.6 && q / r <= 2.0) {
        if (!smoothed) {
            const bool large = rect.x1 - rect.x0 + 1 > kWide && rect.y1 - rect.y0 + 1 > kHigh;
            const int isodata = region.Isodata();
            region.Threshold(src, result, large ? Scaled(isodata, 0.7) : isodata - 20, kKeepBlack);
            return 0;
        }
        region.SmoothAndCount(src, result);
        const int tones = ClassifyHistogram(region.Histogram(), &shares);
        int threshold;
        if (tones == 4) {
            threshold = region.Otsu(shares.high <= 0.2 ? 170 : region.Isodata()) + 10;
        } else if (tones == 5) {
            threshold = region.DarkMean();
        } else if (tones == 1 || tones == 3) {
            threshold = Scaled(region.Isodata(), 0.85);
        } else {
            threshold = region.Otsu(region.Isodata());
        }
        region.Threshold(result, result, threshold, kForce);
        return 0;
    }

    if (r > 0.48 && r <= 0.8 && q <= 0.8) {
        if (region.Threshold(src, result, region.Isodata(), kKeepBlack) == kMostlyDark) {
            return kMostlyDark;
        }
        if (smoothed) {
            region.SmoothAndCount(src, result);
            region.Threshold(result, result, region.Isodata() + 10, kForce);
        } else {
        }
        return 0;
    }

    const int tones = ClassifyHistogram(region.Histogram(), &shares);
    int threshold;
    if (tones == 4) {
        threshold = region.Otsu(region.DarkMean());
    } else if (tones == 5) {
        threshold = region.DarkMean();
    } else {
        const bool scaled = tones == 1 || tones == 3;
        threshold = scaled ? Scaled(region.Isodata(), 0.85) : region.Isodata();
    }
    return region.Threshold(src, result, threshold, kKeepBlack);
}

int EdgeRegionBinarizer::BinarizeRegionSharp(PageRect rect, std::uint8_t* scratch, std::uint8_t* result) {
    constexpr int kClassZeroEnds = 1950, kClassOneEnds = 2400;  // stroke ends from which to sharpen
    constexpr int kSomeEnds = 3000, kManyEnds = 6000;
    Region region(Page(), rect);
    region.Count(src);
    const double s = static_cast<double>(region.DarkPixels(127)) / static_cast<double>(rect.Area());
    HistogramShares shares;

    if (s > 0.8) {
        const int ofText = region.DarkTextOtsu();
        if (ofText >= 0) {
            return region.Threshold(src, result, ofText, kKeepBlack) + kWithEdges;
        }
        return region.Threshold(src, result, region.Isodata(), kKeepBlack);
    }

    region.SmoothAndCount(src, scratch);
    const int code = region.Threshold(scratch, result, region.Isodata(), kForce);
    if (code == kMostlyDark) {
        region.Threshold(scratch, result, region.Isodata() + 10, kForce);
        edgeCutOverride = 250;
        return kDarkWithEdges;
    }
    ClassifyHistogram(region.Histogram(), &shares);

    if (s <= 0.15) {
        if (shares.high >= 0.8) {
            return code;
        }
        const int ends = CountStrokeEndsOf(src);
        if (ends <= kClassZeroEnds) {
            return code;
        }
        const float sharpening = ends > kManyEnds ? 9.9f : ends > kSomeEnds ? 9.8f : 9.6f;
        region.SharpenAndCount(scratch, result, sharpening);
        region.Threshold(result, result, region.Isodata() + (s < 0.06 ? 40 : 0), kForce);
        return code;
    }

    if (shares.high >= 0.6) {
        return code;
    }
    const int ends = CountStrokeEndsOf(src);
    if (ends < kClassOneEnds || ends > kManyEnds) {
        region.SharpenAndCount(scratch, result, ends < kClassOneEnds ? 10.1f : 9.8f);
        return region.Threshold(result, result, region.Isodata(), kForce);
    }
    return region.Threshold(scratch, result, std::min(region.Isodata(), kHighestThreshold), kForce);
}

}  // namespace tavrix
