// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "binarize/Binarizer.h"
#include "image/Plane.h"
#include "regions/Finishing.h"
#include "regions/PreMask.h"
#include "regions/Region.h"

namespace tavrix {

// Measures the page (EdgeMeasures, HistogramClass), makes a rough mask of its foreground (PreMask), finds the
// text in it (TextComponents), joins that into regions (RegionBuilding), thresholds each region by the class
// of its tones (StandardRules, AltRules, SharpRule), and cleans it up (Finishing). The working plane has the
// page's rows, padding included.
class EdgeRegionBinarizer : public Binarizer {
  public:
    explicit EdgeRegionBinarizer(DibImage* page);

    bool BinarizeBlock() override;  // the whole image as one region, by the standard rule
    bool Binarize() override;       // false, with its margins painted, on a page without a text component
    bool BinarizeSharp();           // the whole image as one region, by the sharpening rule

  private:
    bool HasPixels() const { return width > 0 && height > 0; }

    // Measures the page, paints its margins and finds its foreground.
    PreMask BuildPreMask(const Plane& edges);
    // Side borders and end rows become light gray; writes the diagnostic copy.
    void PaintPageMargins();
    // Turns the page's edges, which come in place of the result, into the result. False, with nothing
    // written, without a text component.
    bool RefineByRegions(const PreMask& mask, const RulePlanes& planes);
    // Cleans the regions as their rules asked for.
    static void FinishRegions(const RulePlanes& planes, const std::vector<RegionNode>& regions);

    Plane src{};  // the gray rows of image
};

}  // namespace tavrix
