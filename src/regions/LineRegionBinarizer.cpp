// SPDX-License-Identifier: MIT
#include "regions/LineRegionBinarizer.h"

#include <algorithm>
#include <vector>

#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/ComponentTree.h"
#include "components/OrientedBlockGrouper.h"
#include "components/PrivateStore.h"
#include "image/PixelKernels.h"
#include "regions/AltRules.h"
#include "regions/EdgeMeasures.h"
#include "regions/SideBorders.h"
#include "regions/StandardRules.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kWhite = 255;
constexpr int kBeyondBorder = 7;        // columns painted beyond a dark side border
constexpr int kLineMargin = 10;         // pixels around a line's components
constexpr double kPageShare = 0.8;      // of both sides, from which a line counts as the page
constexpr int kAboveDarkMean = 10;      // levels, of the threshold of a page without lines
constexpr std::uint16_t kSmallest = 2;  // side of the components from which the noise filter starts

}  // namespace

LineRegionBinarizer::LineRegionBinarizer(DibImage* page) {
    if (Attach(page)) gray = PlaneOfPixels(*page);
}

bool LineRegionBinarizer::Binarize() {
    if (!HasPixels()) return false;
    PaintPageMargins();
    const SidePlane result(*image, gray);
    RulePlanes planes{gray, result.Get(), {}};
    const PreMask mask = BuildLinePreMask(planes.result);
    return RefineByLines(mask, planes) && image->PackToOneBit(result.Get().pixels);
}

bool LineRegionBinarizer::BinarizeBlock() {
    if (!HasPixels()) return false;
    const SidePlane result(*image, gray);
    const RulePlanes planes{gray, result.Get(), {}};
    FillPixels(planes.result, kWhite);
    FinishRegion(planes.result, gray.Whole(), LineRule(PageFindings{}, planes, gray.Whole()));
    return image->PackToOneBit(result.Get().pixels);
}

void LineRegionBinarizer::PaintPageMargins() {
    const auto margin = [](int border) { return border != 0 ? border + kBeyondBorder : 0; };
    const SideBorders borders = FindSideBorders(gray);
    PaintMargins(gray, margin(borders.left), margin(borders.right), kWhite);
}

PreMask LineRegionBinarizer::BuildLinePreMask(const Plane& edges) {
    ComputeHistogram(1);
    const Strokes strokes = MaskStrokes(histogram, gray, edges);
    return ChooseLinePreMask({gray, edges, strokes, histogram});
}

bool LineRegionBinarizer::RefineByLines(const PreMask& mask, RulePlanes& planes) {
    PrivateStore components;
    if (!components.IsReady()) return false;
    if (!FindLines(mask.foreground, planes.result, components)) return false;
    FillPixels(planes.result, kWhite);
    std::vector<std::uint8_t> sharpened;
    if (mask.page.midToneHint) {
        sharpened.resize(gray.Bytes());
        planes.sharpened = gray.Over(sharpened.data());
        FillPixels(planes.sharpened, kWhite);
    }
    BinarizeLines(mask.page, planes, components);
    return true;
}

// The packed mask goes to the start of the memory, where its rows stay behind those that it is made from.
bool LineRegionBinarizer::FindLines(const Mask& foreground, const Plane& memory,
                                    ComponentStore& components) const {
    BITMAPINFOHEADER header{};
    header.biWidth = width;
    header.biHeight = height;
    header.biBitCount = 1;
    DibImage mask(&header, nullptr, memory.pixels);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(gray.rowBytes));
    const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
    for (int y = 0; y < height; ++y) {
        foreground.WriteRow(y, row.data());
        packAbove(row.data(), width, 0, mask.Row(y));
    }
    if (!ComponentExtractor(&mask).Run(components)) return false;
    ComponentNoiseFilter filter(&mask);
    filter.Run(components, kSmallest, kSmallest);
    OrientedBlockGrouper(&mask).Run(components);
    filter.FilterForBinarization(components);
    return true;
}

void LineRegionBinarizer::BinarizeLines(PageFindings page, const RulePlanes& planes,
                                        const ComponentStore& components) const {
    bool anyLine = false;
    store::ForEachLine(components, [&](const ComponentNode* line) {
        anyLine = true;
        const Rect rect = PaddedRect(*line);
        if (IsPage(rect)) {  // for the lines after it as well
            page.darkTextHint = true;
            page.secondPass = false;
        }
        const Finish finish =
            page.useAltRegionRule ? LineRuleAlt(page, planes, rect) : LineRule(page, planes, rect);
        FinishRegion(planes.result, rect, finish);
    });
    if (anyLine) return;
    const Region whole(kLineFamily, planes, gray.Whole());
    whole.ThresholdGray(whole.DarkMean() + kAboveDarkMean, Earlier::kOverwritten);
}

Rect LineRegionBinarizer::PaddedRect(const ComponentNode& line) const {
    return Intersection(Extended(RectOf(line), kLineMargin, kLineMargin),
                        {0, 0, ClampedSide(width), ClampedSide(height)});
}

bool LineRegionBinarizer::IsPage(const Rect& line) const {
    return line.Height() >= Scaled(height, kPageShare) && line.Width() >= Scaled(width, kPageShare);
}

}  // namespace tavrix
