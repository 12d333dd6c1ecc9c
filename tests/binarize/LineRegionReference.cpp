// SPDX-License-Identifier: MIT
#include "binarize/LineRegionReference.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "binarize/Binarizer.h"
#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/ComponentStore.h"
#include "components/OrientedBlockGrouper.h"

namespace tavrix::test {
namespace {

template <class Pass>
void ForRect(EdgeRegionReference::Rect rect, const Pass& pass) {
    for (int y = rect.y0; y <= rect.y1; ++y) {
        for (int x = rect.x0; x <= rect.x1; ++x) pass(x, y);
    }
}

}  // namespace

int LineRegionReference::Value(const Bytes& plane, int x, int y) const {
    return x < 0 || x >= width || y < 0 || y >= height ? 0 : plane[At(x, y)];
}

// For passes that only write: what they would write outside is dropped.
LineRegionReference::Rect LineRegionReference::Inside(Rect rect) const {
    return {rect.x0, rect.y0, std::min(rect.x1, width - 1), std::min(rect.y1, height - 1)};
}

void LineRegionReference::ClearPadding(Bytes& plane) const {
    ForRect({width, 0, rowBytes - 1, height - 1}, [&](int x, int y) { plane[At(x, y)] = 0; });
}

LineRegionReference::Bytes LineRegionReference::White() const {
    Bytes plane(src.size(), 255);
    ClearPadding(plane);
    return plane;
}

void LineRegionReference::CountLine(Rect rect, const Bytes& plane) {
    bins.fill(0);
    ForRect(rect, [&](int x, int y) { ++bins[Value(plane, x, y)]; });
}

int LineRegionReference::ThresholdLine(Rect rect, int t, const Bytes& from, Bytes& to, bool force) const {
    int dark = 0, light = 0;
    ForRect(rect, [&](int x, int y) {
        const bool inside = x < width && y < height;
        if (Value(from, x, y) < t) {
            if (inside) to[At(x, y)] = 0;
            ++dark;
        } else if (Value(to, x, y) != 0 || force) {
            if (inside) to[At(x, y)] = 255;
            ++light;
        }
    });
    return light * 1.08 < dark ? 2 : 0;
}

int LineRegionReference::Iso() const {
    return Binarizer::IsodataThreshold(bins.data());
}

int LineRegionReference::Otsu(int end) const {
    return Binarizer::OtsuThreshold(bins.data(), 0, end);
}

int LineRegionReference::ClassifyLine() {
    const int darkClass = Classify(bins, shares);
    if (!(shares.high > 0.5)) return darkClass;
    if (shares.high > 0.7 && shares.midHigh > 0.1) return 0;
    if (shares.mid > 0.3) return 0;
    if (shares.low <= 0.2) return std::fabs(shares.low - shares.midLow) >= 0.02 ? 1 : 2;
    return shares.mid <= 0.06 ? 7 : 0;
}

int LineRegionReference::DarkMean(bool check) const {
    std::int64_t s1 = 0, m1 = 0, s = 0;
    for (int i = 0; i <= 131; ++i) {
        s1 += bins[i];
        m1 += std::int64_t{i} * bins[i];
    }
    const auto s2 = std::accumulate(bins.begin(), bins.begin() + 255, std::int64_t{0});
    if (s1 == 0) return -1;
    const int mean = static_cast<int>(m1 / s1);
    if (!check) return mean;
    if (0.55 * static_cast<double>(s2) > static_cast<double>(s1)) return -1;
    if (mean <= 48 || mean >= 128) return -1;
    for (int i = 0; i <= mean - 21; ++i) s += bins[i];
    return 8 * s >= s1 ? mean : -1;
}

void LineRegionReference::PaintMargins() {
    int left = 0, right = 0;
    FindSideBorders(&left, &right);
    Note(left != 0 ? "left border" : "no left border");
    Note(right != 0 ? "right border" : "no right border");
    if (left != 0) left += 7;
    if (right != 0) right += 7;
    ForRect(Whole(), [&](int x, int y) {
        if (x <= left - 1 || x > width - right || y <= 7 || y >= height - 8) src[At(x, y)] = 255;
    });
}

void LineRegionReference::BuildLinePreMask() {
    PaintMargins();
    Bytes edges(src.size());
    result = edges;
    SobelMagnitude(src, edges, Whole(), false);
    EdgeLevelLoop(edges, ContrastLevel(), result);
    ClearPadding(result);
    ClearPadding(src);  // read no more
    const auto edgeMask = [&](int t) {
        ForRect(Whole(), [&](int x, int y) { result[At(x, y)] = edges[At(x, y)] >= t ? 0 : 255; });
    };
    const auto globalThreshold = [&](int t) {
        ForRect(Whole(), [&](int x, int y) { result[At(x, y)] = src[At(x, y)] > t ? 255 : 0; });
    };

    const int c = CountStrokeEnds(result);
    CountLine(Whole(), src);
    const int k = ClassifyLine();
    const std::string name = ", class " + std::to_string(k);
    if (c > 4500) {
        useAltRegionRule = true;
        if (k % 2 == 0) {
            Note("busy" + name);
            SmoothRegion(Whole(), src, result);
            secondPass = true;
            SobelMagnitude(result, edges, Whole(), false);
            edgeMask(127);
            return;
        }
        Note((c > 9500 ? "very busy" : "busy") + name);
        const int t2 = c > 9500 ? Iso() * 7 / 10 : Iso() * 9 / 10;
        if (k == 5 || k == 7) {
            edgeMask(t2);
        } else {
            globalThreshold(t2);
        }
        if (shares.high > 0.7) {
            Note("busy" + name + ", bright");
            useAltRegionRule = sharpenAllowed = false;
        }
    } else if (c > 2900) {
        const int d = DarkMean(true);
        Note("medium" + name + (d > 0 ? ", dark mean" : ""));
        if (d <= 0 && k == 1) {
            globalThreshold(Iso());
        } else if (d <= 0) {
            secondPass = true;
            edgeMask(127);
        } else if (k == 1) {
            darkTextHint = true;
            edgeMask(127);
        } else if (k == 4) {
            midToneHint = true;
            globalThreshold(Iso());
        } else {
            edgeMask(127);
        }
    } else {
        Note("few" + name);
        if (k == 1) {
            globalThreshold(Otsu());
        } else {
            edgeMask(127);
        }
    }
}

bool LineRegionReference::RefineByLines() {
    DibImage mask;
    mask.Create(width, height, 1);
    ForRect(Whole(), [&](int x, int y) { mask.SetBit(x, y, result[At(x, y)] > 1); });
    ComponentStore components{};
    store::Create(components, 1000, 500);
    ComponentExtractor(&mask).Run(components);
    if (components.componentCount > 500) Note("more than 500 components");
    ComponentNoiseFilter filter(&mask);
    filter.Run(components, 2, 2);
    const bool usable = components.freeList != nullptr;
    if (usable) {
        OrientedBlockGrouper(&mask).Run(components);
        filter.FilterForBinarization(components);
        result = White();
        BinarizeLines(components);
    }
    store::Release(components);
    return usable;
}

void LineRegionReference::BinarizeLines(const ComponentStore& components) {
    scratch = White();
    int lines = 0;
    for (auto* block = components.firstBlock; block != nullptr; block = block->next) {
        for (auto* line = block->firstChild; line != nullptr; line = line->next) {
            ++lines;
            const Rect rect{std::max(line->left - 10, 0), std::max(line->bottom - 10, 0),
                            std::min(line->right + 10, width), std::min(line->top + 10, height)};
            if (std::abs(rect.y1 - rect.y0) + 1 >= static_cast<int>(height * 0.8) &&
                rect.x1 - rect.x0 + 1 >= static_cast<int>(width * 0.8)) {
                Note("covers the page");
                darkTextHint = true;
                secondPass = false;
            }
            if (rect.x1 == width) Note("column beyond the last");
            if (rect.y1 == height) Note("row beyond the last");
            FinishLine(rect, useAltRegionRule ? LineRuleAlt(rect) : LineRule(rect));
        }
    }
    if (lines == 0) {
        Note("no line");
        CountLine(Whole(), src);
        ThresholdLine(Whole(), DarkMean(false) + 10, src, result, true);
    }
}

int LineRegionReference::LineClass(Rect rect) {
    CountLine(rect, src);
    const auto share = [&](int end) {
        return static_cast<float>(std::accumulate(bins.begin(), bins.begin() + end, 0u)) /
               static_cast<float>(rect.Area());
    };
    r = share(100);
    q = share(128);
    if (r <= 0.02) return 0;
    if (r <= 0.48) return q <= 0.6 && q / r <= 2.0f ? 1 : 3;
    if (r <= 0.8) return q <= 0.8 ? 2 : 3;
    return 3;
}

int LineRegionReference::LineRule(Rect rect) {
    const int kind = LineClass(rect);
    const std::string rule = "rule, class " + std::to_string(kind);
    const auto meanOtsu = [&](int otherwise) {
        const int m = DarkMean(true);
        Note(rule + (m > 0 ? ", dark mean" : ", no dark mean"));
        return m > 0 ? Otsu(m) : otherwise;
    };
    const auto mergeSmoothed = [&](int above) {
        Note(rule + ", second pass");
        SmoothRegion(Inside(rect), src, scratch);
        CountLine(rect, scratch);
        ThresholdLine(rect, Iso() + above, scratch, scratch, true);
        Merge(Inside(rect), result, scratch);
    };
    if (kind == 0) {
        const int res = ThresholdLine(rect, Otsu(), src, result, false);
        Note(rule + (res == 2 ? ", dark" : ", light"));
        return res == 2 ? 2 : 1;
    }
    if (kind == 1) {
        int res = 0;
        if (darkTextHint) {
            res = ThresholdLine(rect, meanOtsu(Otsu()), src, result, true);
            Note(rule + ", hint");
        } else if (sharpenAllowed) {
            const float k = r > 0.1 ? 10.0f : r >= 0.038 ? 9.8f : 9.6f;
            Note(rule + (r > 0.1 ? ", factor 10" : r >= 0.038 ? ", factor 9.8" : ", factor 9.6"));
            SharpenRegion(Inside(rect), src, scratch, k);
            CountLine(rect, scratch);
            const int t = Iso() + (r <= 0.1 ? 40 : 30);
            if (t > 250) Note(rule + ", lowered");
            res = ThresholdLine(rect, std::min(t, 250), scratch, result, false);
            if (secondPass && r >= 0.038) mergeSmoothed(15);
        } else {
            Note(rule + ", plain");
            res = ThresholdLine(rect, Iso() - 20, src, result, false);
        }
        Note(rule + (res == 2 ? ", dark" : ", light"));
        return res == 2 ? 2 : 0;
    }
    if (kind == 2) {
        if (ThresholdLine(rect, Iso(), src, result, false) == 2) {
            Note(rule + ", dark");
            return 2;
        }
        Note(rule + ", light");
        if (darkTextHint) {
            ThresholdLine(rect, meanOtsu(Otsu()), src, result, true);
            return 0;
        }
        if (!sharpenAllowed) {
            Note(rule + ", plain");
            return 0;
        }
        if (r < 0.6) {
            Note(rule + ", sharpened");
            SharpenRegion(Inside(rect), src, scratch, 9.8f);
            CountLine(rect, scratch);
            if (Iso() + 10 > 250) Note(rule + ", lowered");
            ThresholdLine(rect, std::min(Iso() + 10, 250), scratch, result, false);
        }
        if (secondPass) mergeSmoothed(10);
        return 0;
    }
    if (ClassifyLine() == 4 && midToneHint) {
        Note(rule + ", mid tones");
        SharpenRegion(Inside(rect), src, scratch, 10.0f);
        SmoothRegion(Inside(rect), scratch, result);
        CountLine(rect, result);
        return ThresholdLine(rect, static_cast<int>(Otsu() * 0.8), result, result, false);
    }
    return ThresholdLine(rect, meanOtsu(Iso()), src, result, false);
}

int LineRegionReference::LineRuleAlt(Rect rect) {
    const int kind = LineClass(rect);
    const std::string rule = "alternative, class " + std::to_string(kind);
    if (kind == 0) {
        const int res = ThresholdLine(rect, Otsu(), src, result, false);
        Note(rule + (res == 2 ? ", dark" : ", light"));
        return res == 2 ? 2 : 1;
    }
    if (kind == 1 && !secondPass) {
        int t = Iso();
        const bool large = rect.x1 - rect.x0 + 1 > 700 && std::abs(rect.y1 - rect.y0) + 1 > 500;
        t = large ? static_cast<int>(t * 0.7) : t - 20;
        Note(rule + (large ? ", large" : ", small"));
        const int res = ThresholdLine(rect, t, src, result, false);
        if (res == 2 && r >= 0.5) Note(rule + ", dark");
        return res == 2 && r >= 0.5 ? 2 : 0;
    }
    if (kind == 1) {
        SmoothRegion(Inside(rect), src, result);
        CountLine(rect, result);
        const int k = ClassifyLine();
        Note(rule + ", smoothed " + std::to_string(k));
        int t = Otsu();
        if (k == 5) {
            t = DarkMean(false);
        } else if (k == 1 || k == 3) {
            t = static_cast<int>(t * 0.85);
        } else {
            t = Otsu(t);
        }
        ThresholdLine(rect, t, result, result, true);
        return 0;
    }
    if (kind == 2) {
        if (ThresholdLine(rect, Iso(), src, result, false) == 2) {
            Note(rule + ", dark");
            return 2;
        }
        Note(rule + (secondPass ? ", smoothed" : ", light"));
        if (secondPass) {
            SmoothRegion(Inside(rect), src, result);
            CountLine(rect, result);
            ThresholdLine(rect, Iso() + 10, result, result, true);
        }
        return 0;
    }
    const int k = ClassifyLine();
    Note(rule + ", histogram " + std::to_string(k));
    int t = Otsu();
    if (k == 4) {
        t = Otsu(DarkMean(false));
    } else if (k == 5) {
        t = DarkMean(false);
    } else if (k == 1 || k == 3) {
        t = static_cast<int>(t * 0.85);
    }
    return ThresholdLine(rect, t, src, result, false);
}

void LineRegionReference::FinishLine(Rect rect, int code) {
    Note("code " + std::to_string(code));
    if (code != 2) {
        CleanRegion(rect = Inside(rect), code, result);
        return;
    }
    ForRect(Inside(rect), [&](int x, int y) {
        std::uint8_t& value = result[At(x, y)];
        const bool inside = x - rect.x0 > 10 && rect.x1 - x > 10 && y - rect.y0 >= 11 && rect.y1 - y >= 11;
        if (value == 0) {
            value = 254;
        } else if (value == 255 && inside) {
            value = 1;
        }
    });
}

std::optional<LineRegionReference::Bytes> LineRegionReference::Binarize() {
    if (width == 0 || height == 0) return std::nullopt;
    BuildLinePreMask();
    if (!RefineByLines()) return std::nullopt;
    return result;
}

std::optional<LineRegionReference::Bytes> LineRegionReference::BinarizeBlock() {
    if (width == 0 || height == 0) return std::nullopt;
    ClearPadding(src);
    result = White();
    scratch = Bytes(src.size());
    FinishLine(Whole(), LineRule(Whole()));
    return result;
}

}  // namespace tavrix::test
