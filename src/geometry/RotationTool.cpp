// SPDX-License-Identifier: MIT
#include "geometry/RotationTool.h"

#include "geometry/BitTurns.h"
#include "geometry/FreeRotation.h"
#include "geometry/TurnKernels.h"
#include "platform/CpuFeatures.h"
#include "platform/OutputFile.h"

namespace tavrix {

RotationTool::RotationTool(DibImage* imageToTurn)
    : image(imageToTurn),
      width(imageToTurn->Width()),
      rowBytes(imageToTurn->RowBytes()),
      height(imageToTurn->Height()),
      bitCount(imageToTurn->header->biBitCount) {}

Rect RotationTool::Mapped(const Rect& rect, std::uint16_t code) const {
    const auto fromRight = [this](int x) { return static_cast<std::int16_t>(width - x); };
    const auto fromTop = [this](int y) { return static_cast<std::int16_t>(height - y); };
    switch (code) {
        case 1: return Ordered({rect.y0, fromRight(rect.x0), rect.y1, fromRight(rect.x1)});
        case 2: return Ordered({fromRight(rect.x0), fromTop(rect.y0), fromRight(rect.x1), fromTop(rect.y1)});
        case 3: return Ordered({fromTop(rect.y0), rect.x0, fromTop(rect.y1), rect.x1});
        default: return Ordered(rect);
    }
}

bool RotationTool::RotateNodeRect(ComponentNode* node, std::uint16_t code) {
    SetRect(*node, Mapped(RectOf(*node), code));
    return true;
}

bool RotationTool::RotateRect(BlockRect* rect, std::uint16_t code) {
    SetRect(*rect, Mapped(RectOf(*rect), code));
    return true;
}

ImagePtr RotationTool::RotateBlock(const BlockRect& block, std::uint16_t code) {
    return TurnedBlock(*image, block, code);
}

ImagePtr RotationTool::RotateOneBit(const DibImage& source, int angle) {
    return TurnedWhole(source, angle);
}

ImagePtr RotationTool::FlipOneBit(int mode, const DibImage& source) {
    switch (mode) {
        case 1: return Flipped(source);
        case 2: return Mirrored(source);
        default: return nullptr;
    }
}

ImagePtr RotationTool::RotateGray(std::int32_t angle) {
    constexpr std::uint16_t kQuarterTurn = 90;  // degrees
    return static_cast<std::uint16_t>(angle) == kQuarterTurn ? RotateGrayQuarter() : nullptr;
}

ImagePtr RotationTool::RotateGrayQuarter() {
    const int columns = image->Width(), rows = image->Height();
    ImagePtr turned = DibImage::NewUncleared(rows, columns, 8);
    if (!turned) return nullptr;
    const std::ptrdiff_t stride = turned->RowBytes();
    if (columns > 0) {
        platform::KernelsOf<TurnKernels>().transposeBytes(image->bits, image->RowBytes(), columns, rows,
                                                          turned->Row(columns - 1), -stride);
    }
    turned->WriteBmp(platform::kDebugDumpPath);
    return turned;
}

ImagePtr RotationTool::RotateFreeGray(double angle, std::int32_t clockwise) {
    return RotatedFreely(*image, angle, clockwise);
}

ImagePtr RotationTool::RotateFreeColor(double angle, std::int32_t clockwise) {
    return RotatedFreely(*image, angle, clockwise);
}

}  // namespace tavrix
