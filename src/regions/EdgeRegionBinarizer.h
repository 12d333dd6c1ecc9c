// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "binarize/Binarizer.h"
#include "image/Plane.h"
#include "regions/Finishing.h"
#include "regions/PageFindings.h"
#include "regions/Region.h"

namespace tavrix {

// Measures the page (EdgeMeasures, HistogramClass), makes a rough mask of its foreground (PreMask), finds the
// text in it (TextComponents), joins that into regions (RegionBuilding), thresholds each region by the class
// of its tones (StandardRules, AltRules, SharpRule), and cleans it up (Finishing). Working planes have the
// page's rows, padding included.
class EdgeRegionBinarizer : public Binarizer {
  public:
    explicit EdgeRegionBinarizer(DibImage* page);

    bool BinarizeBlock() override;  // the whole image as one region, by the standard rule
    bool Binarize() override;       // false, with its margins painted, on a page without a text component
    bool BinarizeSharp();           // the whole image as one region, by the sharpening rule

  private:
    bool HasPixels() const { return width > 0 && height > 0; }

    // Measures the page, paints its margins and makes the mask (0 is foreground). edges comes zeroed.
    PageFindings BuildPreMask(const Plane& preMask, const Plane& edges);
    // Side borders and end rows become light gray; writes the diagnostic copy.
    void PaintPageMargins();
    // Turns the pre-mask, which comes in place of the result, into the result. False, with the mask as it
    // was, without a text component.
    bool RefineByRegions(const PageFindings& page, const RulePlanes& planes);
    // Cleans the regions as their rules asked for.
    static void FinishRegions(const RulePlanes& planes, const std::vector<RegionNode>& regions);

    Plane src{};  // the gray rows of image
};

}  // namespace tavrix
