// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "binarize/Binarizer.h"
#include "regions/HistogramMeasures.h"
#include "regions/PageShape.h"
#include "regions/TextComponents.h"

namespace tavrix {

// A region of text, and what is to be done about it.
struct RegionNode {
    int left, right, bottom, top;  // bottom is the largest row
    // Absorbed by another region, while regions are being built; then the code of the region's rule:
    // 0 fill gaps and mark, 1 mark, 2 leave; 3 to 5 the same with strong edges added.
    std::uint8_t flag;

    PageRect Rect() const;
};

// Methods 5 and 9: measures the page (contrast, edges, stroke ends, histogram), makes a rough mask of its
// foreground, finds the text components in it, and thresholds each region of text with a rule of its own.
// Working buffers have the page's rows, padding included; in the result 0 and 1 are black, 254 and 255
// white.
class EdgeRegionBinarizer : public Binarizer {
  public:
    explicit EdgeRegionBinarizer(DibImage* image);

    bool BinarizeBlock() override;  // the whole image as one region, by the standard rule
    bool Binarize() override;
    bool BinarizeSharp();  // the whole image as one region, by the sharpening rule

    // Measures the page, paints its margins and chooses the mask (0 is foreground). edges, zeroed, is left
    // with edge strengths. smoothed asks the region rules for their second pass.
    void BuildPreMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed);
    // Side borders and end rows become light gray; writes the diagnostic copy.
    void PaintPageMargins();
    // 0, 1, 2, 3, 4, 5 or 7.
    int ClassifyHistogram(const std::uint32_t* histogram, HistogramShares* shares) const;
    // check: -1 unless the dark pixels look like text. Otherwise 0 without dark pixels.
    static int DarkMeanCheck(const std::uint32_t* histogram, bool check);
    // Stroke ends of a buffer's edges; -1 when memory runs out. Recomputes histogram.
    int CountStrokeEndsOf(const std::uint8_t* buffer);

    // Turns the pre-mask into the result; false, with the mask as it was, without a text component.
    bool RefineByRegions(std::uint8_t* result, std::uint8_t* scratch, bool smoothed);
    std::vector<RegionNode> BuildRegions(std::uint8_t* scratch, std::uint8_t* result,
                                         const std::vector<ComponentRecord>& records, bool smoothed);
    // Cleans the regions as their codes say; without scratch codes 3 to 5 count as 0 to 2.
    void FinishRegions(std::uint8_t* result, std::uint8_t* scratch,
                       const std::vector<RegionNode>& regions) const;
    // Black for good where the edge mask or the result is, else white for good.
    void ApplyEdgeMask(PageRect rect, std::uint8_t* result, const std::uint8_t* edgeMask) const;

    // The rules: threshold one rectangle of the page into the result and give the code.
    int BinarizeRegion(PageRect rect, std::uint8_t* scratch, std::uint8_t* result, bool smoothed);
    int BinarizeRegionAlt(PageRect rect, std::uint8_t* result, bool smoothed);
    int BinarizeRegionSharp(PageRect rect, std::uint8_t* scratch, std::uint8_t* result);

    std::uint8_t* src = nullptr;      // the gray rows of image
    bool darkTextHint = false;        // a medium count of stroke ends on a bright page with dark text
    bool useAltRegionRule = false;    // a busy page
    std::int32_t strokeEndCount = 0;  // of the final edge mask
    bool sharpenAllowed = true;
    bool globalThresholdUsed = false;  // the mask came from a gray threshold: wide components may be text
    std::int16_t edgeCutOverride = 0;  // edge strength from which FinishRegions adds pixels; 0 is 250

  private:
    PageShape Page() const { return {width, static_cast<int>(rowBytes), height, static_cast<int>(rowBytes)}; }
    bool HasPixels() const { return width > 0 && height > 0; }
    // One region rule over the whole image.
    template <class Rule>
    bool BinarizeWhole(bool withEdges, const Rule& rule);

    void ChooseBusyMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed);
    void ChooseMediumMask(std::uint8_t* preMask, std::uint8_t* edges, bool* smoothed);
    void ChooseQuietMask(std::uint8_t* preMask);
    void ThresholdGlobally(std::uint8_t* preMask, int threshold);
    void SmoothForEdges(std::uint8_t* preMask, std::uint8_t* edges);
};

}  // namespace tavrix
