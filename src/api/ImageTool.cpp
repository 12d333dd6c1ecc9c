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

constexpr std::uint16_t kSharpMethod = 9;
constexpr float kSharpening = 10.0f;  // weight of the centre

bool RefuseUnknownMode() {
    platform::ShowMessage(platform::kUnknownMode);
    return false;
}

// Null for an unknown method; 9 is method 5's other variant.
std::unique_ptr<Binarizer> BinarizerOf(DibImage* image, std::uint16_t methodId) {
    switch (methodId) {
        case 0: return std::make_unique<OtsuBinarizer>(image);
        case 1: return std::make_unique<PeakFitBinarizer>(image);
        case 2: return std::make_unique<LocalContrastBinarizer>(image);
        case 3: return std::make_unique<BernsenBinarizer>(image);
        case 4: return std::make_unique<GradientBinarizer>(image);
        case 5: return std::make_unique<EdgeRegionBinarizer>(image);
        case 6: return std::make_unique<IsodataBinarizer>(image);
        case 8: return std::make_unique<LineRegionBinarizer>(image);
        default: return nullptr;
    }
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
        const auto id = static_cast<std::uint16_t>(methodId);
        if (id == kSharpMethod) return EdgeRegionBinarizer(image).BinarizeSharp();
        const auto binarizer = BinarizerOf(image, id);
        return binarizer ? binarizer->Binarize() : RefuseUnknownMode();
    });
}

bool ImageTool::BinarizeByBlocks(std::uint32_t methodId) {
    return Guarded(false, [&] {
        const auto binarizer = BinarizerOf(image, static_cast<std::uint16_t>(methodId));
        return binarizer ? binarizer->BinarizeBlock() : RefuseUnknownMode();
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
