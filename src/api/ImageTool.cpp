// SPDX-License-Identifier: MIT
#include "api/ImageTool.h"

#include <memory>

#include "api/MorphologyOperations.h"
#include "binarize/BernsenBinarizer.h"
#include "binarize/GradientBinarizer.h"
#include "binarize/IsodataBinarizer.h"
#include "binarize/LocalContrastBinarizer.h"
#include "binarize/OtsuBinarizer.h"
#include "binarize/PeakFitBinarizer.h"
#include "components/AlignedBlockGrouper.h"
#include "components/CardLogo.h"
#include "components/ComponentExtractor.h"
#include "components/ComponentNoiseFilter.h"
#include "components/OrientedBlockGrouper.h"
#include "geometry/RotationTool.h"
#include "lines/TextLineGrouper.h"
#include "morphology/MorphologyFilter.h"
#include "platform/Guarded.h"
#include "platform/Message.h"
#include "platform/OutputFile.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/LineRegionBinarizer.h"

namespace tavrix {
namespace {

constexpr float kSharpening = 10.0f;  // weight of the centre

bool RefuseUnknownMode() {
    platform::ShowMessage(platform::kUnknownMode);
    return false;
}

std::unique_ptr<ComponentGrouper> GrouperOf(const ImageTool& tool, std::uint32_t mode) {
    switch (mode) {
        case 0: return std::make_unique<OrientedBlockGrouper>(tool.image);
        case 1: return std::make_unique<AlignedBlockGrouper>(tool.image);
        case 3:
            return std::make_unique<TextLineGrouper>(tool.image, tool.groupingOptions, tool.groupingValue);
        default: return nullptr;
    }
}

}  // namespace

ImageTool::ImageTool(DibImage* imageToWorkOn) : image(imageToWorkOn) {
    if (image == nullptr) platform::ShowMessage(platform::kNoImage);
}

bool ImageTool::BinarizeByMethod(std::uint32_t methodId) {
    return Guarded(false, [&] {
        switch (static_cast<std::uint16_t>(methodId)) {
            case 0: return OtsuBinarizer(image).Binarize();
            case 1: return PeakFitBinarizer(image).Binarize();
            case 2: return LocalContrastBinarizer(image).Binarize();
            case 3: return BernsenBinarizer(image).Binarize();
            case 4: return GradientBinarizer(image).Binarize();
            case 5: return EdgeRegionBinarizer(image).Binarize();
            case 6: return IsodataBinarizer(image).Binarize();
            case 8: return LineRegionBinarizer(image).Binarize();
            case 9: return EdgeRegionBinarizer(image).BinarizeSharp();
            default: return RefuseUnknownMode();
        }
    });
}

bool ImageTool::BinarizeByBlocks(std::uint32_t methodId) {
    return Guarded(false, [&] {
        switch (static_cast<std::uint16_t>(methodId)) {
            case 0: return OtsuBinarizer(image).BinarizeBlock();
            case 1: return PeakFitBinarizer(image).BinarizeBlock();
            case 2: return LocalContrastBinarizer(image).BinarizeBlock();
            case 3: return BernsenBinarizer(image).BinarizeBlock();
            case 4: return GradientBinarizer(image).BinarizeBlock();
            case 5: return EdgeRegionBinarizer(image).BinarizeBlock();
            case 6: return IsodataBinarizer(image).BinarizeBlock();
            case 8: return LineRegionBinarizer(image).BinarizeBlock();
            default: return RefuseUnknownMode();
        }
    });
}

bool ImageTool::ExtractComponents(ComponentStore* store, std::uint32_t mode, std::int32_t growX,
                                  std::int32_t growY) {
    ComponentExtractor extractor(image);
    switch (static_cast<std::uint16_t>(mode)) {
        case 1: extractor.Run(*store); return true;
        case 2: extractor.RunAndGrow(*store, growX, growY); return true;
        default: return false;
    }
}

bool ImageTool::GroupComponents(ComponentStore* store, std::uint32_t mode) {
    const auto grouper = GrouperOf(*this, mode);
    return grouper && grouper->Run(*store);
}

bool ImageTool::FilterNoise(ComponentStore* store, std::uint32_t maxW, std::uint32_t maxH,
                            std::uint32_t mode) {
    ComponentNoiseFilter filter(image);
    if (mode == 0)
        filter.FilterBySize(*store, static_cast<std::uint16_t>(maxW), static_cast<std::uint16_t>(maxH));
    if (mode == 1) filter.FilterLineNoise(*store);
    return true;
}

void ImageTool::FindLogo(LogoRect* result, const ComponentStore* store) {
    *result = LogoOf(*store, image->Width(), image->Height());
}

ImagePtr ImageTool::RotateGray(std::int32_t angle) {
    return RotationTool(image).RotateGray(angle);
}

ImagePtr ImageTool::RotateByAngle(double angle, std::int32_t clockwise) {
    RotationTool tool(image);
    ImagePtr turned =
        image->Is24Bit() ? tool.RotateFreeColor(angle, clockwise) : tool.RotateFreeGray(angle, clockwise);
    if (turned) turned->WriteBmp(platform::kDebugDumpPath);
    return turned;
}

ImagePtr ImageTool::RotateBlock(const BlockRect& block, std::uint32_t code) {
    return RotationTool(image).RotateBlock(block, static_cast<std::uint16_t>(code));
}

bool ImageTool::RunMorphology(std::uint32_t operation) {
    MorphologyFilter filter(image);
    switch (operation) {
        case api::kEdgeMap: filter.EdgeMap(); break;
        case api::kOpening: filter.Opening(); break;
        case api::kClosing: filter.Closing(); break;
        case api::kSmooth: filter.Smooth3x3(); break;
        case api::kSharpen: filter.Sharpen(kSharpening); break;
        case api::kDilate: filter.Dilate(); break;
        default: break;
    }
    return true;
}

}  // namespace tavrix
