// SPDX-License-Identifier: MIT
#pragma once

#include <set>
#include <string>

#include "binarize/EdgeRegionReference.h"
#include "tavrix/tavrix.h"

namespace tavrix::test {

// The binarization by text lines in the same way. Whatever lies outside the pixels reads 0 and drops what
// is written; in the planes that is also the padding. Shares with the library the component classes as
// well. Notes which ways it took.
class LineRegionReference : public EdgeRegionReference {
  public:
    using EdgeRegionReference::EdgeRegionReference;
    std::optional<Bytes> Binarize();
    std::optional<Bytes> BinarizeBlock();

    std::set<std::string> branches;

  private:
    void Note(const std::string& branch) { branches.insert(branch); }
    int Value(const Bytes& plane, int x, int y) const;
    Rect Inside(Rect rect) const;
    void ClearPadding(Bytes& plane) const;
    Bytes White() const;
    void CountLine(Rect rect, const Bytes& plane);
    int ThresholdLine(Rect rect, int t, const Bytes& from, Bytes& to, bool force) const;
    int Iso() const;
    int Otsu(int end = 256) const;
    int ClassifyLine();
    int DarkMean(bool check) const;
    void PaintMargins();
    void BuildLinePreMask();
    bool RefineByLines();
    void BinarizeLines(const ComponentStore& components);
    int LineClass(Rect rect);
    int LineRule(Rect rect);
    int LineRuleAlt(Rect rect);
    void FinishLine(Rect rect, int code);

    Bytes result, scratch;
    Histogram bins{};
    Shares shares{};
    float r = 0, q = 0;
    bool midToneHint = false, secondPass = false;
};

}  // namespace tavrix::test
