// SPDX-License-Identifier: MIT
#pragma once

#include "binarize/Binarizer.h"
#include "image/Plane.h"
#include "regions/PreMask.h"
#include "regions/Region.h"

namespace tavrix {

// Binarization by text lines: the page is measured (EdgeMeasures, HistogramClass) and roughly split into
// foreground and background (PreMask), the components of the foreground are grouped into lines, every line's
// rectangle is thresholded by the class of its tones (StandardRules, AltRules) and cleaned up (Finishing).
// Dark bands with bright text come out as dark text on white.
//
// The padding of working planes counts as outside.
class LineRegionBinarizer : public Binarizer {
  public:
    explicit LineRegionBinarizer(DibImage* page);
    // Thresholds the image as one line.
    bool BinarizeBlock() override;
    // Paints the page's margins white first. False, with the margins painted, when memory runs out.
    bool Binarize() override;

  private:
    bool HasPixels() const { return width > 0 && height > 0; }

    void PaintPageMargins();
    // Measures the page and finds its foreground.
    PreMask BuildLinePreMask(const Plane& edges);
    // Turns the page's edges, which come in place of the result, into the result.
    bool RefineByLines(const PreMask& mask, RulePlanes& planes);
    // The components of the foreground, grouped into lines. Works in the memory of a plane. False when memory
    // runs out.
    bool FindLines(const Mask& foreground, const Plane& memory, ComponentStore& components) const;
    void BinarizeLines(PageFindings page, const RulePlanes& planes, const ComponentStore& components) const;
    // The rectangle of a line with some margin, which may reach a column and a row beyond the page.
    Rect PaddedRect(const ComponentNode& line) const;
    // Covers most of the page in both directions.
    bool IsPage(const Rect& line) const;

    Plane gray{};  // the pixels of image
};

}  // namespace tavrix
