// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "support/HostImage.h"

namespace tavrix::test {

// The edge-guided binarization pixel by pixel and step by step, as slow as it gets: what the fast one is
// compared with. Shares no code with it but the isodata and Otsu thresholds.
class EdgeRegionReference {
  public:
    using Bytes = std::vector<std::uint8_t>;

    explicit EdgeRegionReference(const HostImage& page);

    // The result (below 2 is black), or nothing when the method fails. src is then the page as it was left.
    std::optional<Bytes> Binarize();
    std::optional<Bytes> BinarizeBlock();
    std::optional<Bytes> BinarizeSharp();

    struct Rect {
        int x0, y0, x1, y1;
        int Area() const { return (x1 - x0 + 1) * (y1 - y0 + 1); }
    };
    struct Run {
        int x0, x1, y;
        bool operator==(const Run&) const = default;
    };
    struct Component {
        int area = 0, runEnds = 0;
        std::vector<Run> runs;
        bool operator==(const Component&) const = default;
    };
    static std::vector<Component> LabelRuns(const std::uint8_t* mask, int columns, int rows);

    void SobelMagnitude(const Bytes& from, Bytes& to, Rect rect, bool maskPass) const;
    int CountStrokeEnds(const Bytes& mask) const;
    void SmoothRegion(Rect rect, const Bytes& from, Bytes& to) const;
    void SharpenRegion(Rect rect, const Bytes& from, Bytes& to, float k) const;
    static int ThresholdRegion(const EdgeRegionReference& page, Rect rect, int t, const Bytes& from,
                               Bytes& to, bool force);
    void FindSideBorders(int* left, int* right) const;
    void CleanRegion(Rect& rect, int mode, Bytes& a) const;

    int width, rowBytes, height;
    Bytes src;
    bool darkTextHint = false, useAltRegionRule = false, sharpenAllowed = true, globalThresholdUsed = false;
    int strokeEndCount = 0, edgeCutOverride = 0;

  protected:
    using Histogram = std::array<std::uint32_t, 256>;
    struct Shares {
        float high, mid, midLow, midHigh, low;
    };
    struct Record {
        int group, area, left, right, bottom, top, centreX, centreY;
    };
    struct Region {
        int left, right, bottom, top, flag;
        Rect AsRect() const { return {left, top, right, bottom}; }
    };

    std::size_t At(int x, int y) const { return static_cast<std::size_t>(y) * rowBytes + x; }
    Rect Whole() const { return {0, 0, width - 1, height - 1}; }
    Histogram Count(Rect rect, const Bytes& buffer) const;
    int ContrastLevel() const;
    void EdgeLevelLoop(const Bytes& b, int level, Bytes& a) const;
    int Classify(const Histogram& h, Shares& shares) const;
    static int DarkMeanCheck(const Histogram& h, bool check);
    int CountStrokeEndsOf(const Bytes& buffer) const;
    void PaintPageMargins();
    void BuildPreMask(Bytes& a, bool& smoothed);
    bool RefineByRegions(Bytes& a, bool smoothed);
    std::vector<Record> FindTextComponents(const Bytes& mask) const;
    std::vector<Region> BuildRegions(const std::vector<Record>& records, Bytes& c, Bytes& a, bool smoothed);
    void FinishRegions(Bytes& a, Bytes* c, std::vector<Region>& results) const;
    int Rule(Rect rect, Bytes& c, Bytes& a, bool smoothed);
    int RuleAlt(Rect rect, Bytes& a, bool smoothed);
    int RuleSharp(Rect rect, Bytes& c, Bytes& a);
    void Merge(Rect rect, Bytes& a, const Bytes& c) const;
};

}  // namespace tavrix::test
