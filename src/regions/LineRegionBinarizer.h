// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"
#include "regions/HistogramMeasures.h"
#include "regions/PageShape.h"

namespace tavrix {

// Binarization by text lines: the page is measured and roughly split into foreground and background, the
// components of the foreground are grouped into lines, and every line's rectangle is thresholded by a rule
// that the measurements choose. Dark bands with light text come out as dark text on white.
//
// Working images are byte planes of the page's layout, 0 black and 255 white; a line's finishing marks what
// is settled with 1 and 254. Planes are blank copies of the page, their padding stays 0.
class LineRegionBinarizer : public Binarizer {
  public:
    explicit LineRegionBinarizer(DibImage* image);
    // Thresholds the image as one line.
    bool BinarizeBlock() override;
    // Paints the page's margins white first. False, with the margins painted, when memory runs out.
    bool Binarize() override;

    // What the page's measurements tell the line rules.
    bool darkTextHint = false;
    bool sharpenAllowed = true;     // not on very bright busy pages
    bool useAltRegionRule = false;  // busy pages
    bool midToneHint = false;

  private:
    // A rectangle's gray tones: shares of its area, and the kind of text they mean.
    struct Tones {
        float dark;       // bins 0..99
        float notBright;  // bins 0..127
        int kind;         // 0 nearly no dark pixel ... 3 mostly dark or shaded
    };

    bool HasPixels() const { return width > 0 && height > 0; }
    PageShape Page() const { return PageShape::PixelsOnly(*image); }

    void PaintMargins();
    void BuildLinePreMask(std::uint8_t* mask, std::uint8_t* edges, bool& secondPass);
    void ChoosePreMask(int strokeEnds, std::uint8_t* edges, std::uint8_t* mask, bool& secondPass);
    bool RefineByLines(std::uint8_t* scratch, std::uint8_t* result, bool secondPass);
    void BinarizeLines(std::uint8_t* scratch, std::uint8_t* result, const ComponentStore& components,
                       bool secondPass);

    static int LineClassifyHistogram(const std::uint32_t* histogram, HistogramShares& shares);
    // The following work on the histogram counted last.
    int Classify() const;
    int Iso() const { return IsodataThreshold(histogram); }
    int Otsu(int end = 256) const { return OtsuThreshold(histogram, 0, end); }
    int OtsuBelowDarkMean(int otherwise) const;

    void CountTones(PageRect rect, const std::uint8_t* plane);
    Tones MeasureLine(PageRect rect);
    int ThresholdLine(PageRect rect, int threshold, const std::uint8_t* source, std::uint8_t* target,
                      bool force) const;
    void MergeSmoothed(PageRect rect, int above, std::uint8_t* scratch, std::uint8_t* result);
    int LineRule(PageRect rect, std::uint8_t* scratch, std::uint8_t* result, bool secondPass);
    int LineRuleAlt(PageRect rect, std::uint8_t* result, bool secondPass);
    void FinishLine(std::uint8_t* result, PageRect rect, int code) const;
};

}  // namespace tavrix
