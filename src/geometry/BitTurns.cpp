// SPDX-License-Identifier: MIT
#include "geometry/BitTurns.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

#include "geometry/TurnKernels.h"
#include "image/Rect.h"
#include "platform/CpuFeatures.h"

namespace tavrix {
namespace {

// A block of a 1-bit image: its first row, the bit where it starts there, its size.
struct BitBlock {
    const std::uint8_t* rows;
    std::ptrdiff_t stride;
    int first;
    int width;
    int height;

    explicit BitBlock(const DibImage& image) : BitBlock(image, 0, 0, image.Width(), image.Height()) {}
    BitBlock(const DibImage& image, int left, int bottom, int blockWidth, int blockHeight)
        : rows(image.Row(bottom) + left / 8),
          stride(image.RowBytes()),
          first(left % 8),
          width(blockWidth),
          height(blockHeight) {}
};

// What a turn does with the stored order of rows and columns of its result.
enum class Order { kAsStored, kReversed };

// Result rows are the block's, in the given orders. The result has its size.
void PlaceRows(const BitBlock& block, Order rowOrder, Order columnOrder, DibImage& result) {
    if (block.width == 0 || block.height == 0) return;
    const bool isUpright = rowOrder == Order::kAsStored;
    std::uint8_t* target = result.Row(isUpright ? 0 : block.height - 1);
    const std::ptrdiff_t rowBytes = result.RowBytes(), step = isUpright ? rowBytes : -rowBytes;
    if (columnOrder == Order::kAsStored && block.first == 0) {
        const std::ptrdiff_t last = (block.width - 1) / 8;
        const auto lastMask = static_cast<std::uint8_t>(0xFF << (7 - (block.width - 1) % 8));
        for (int y = 0; y < block.height; ++y) {
            const std::uint8_t* source = block.rows + block.stride * y;
            std::memcpy(target + step * y, source, static_cast<std::size_t>(last));
            target[step * y + last] = source[last] & lastMask;
        }
        return;
    }
    const auto& kernels = platform::KernelsOf<TurnKernels>();
    const auto placeRow = columnOrder == Order::kAsStored ? kernels.copyBits : kernels.reverseBits;
    for (int y = 0; y < block.height; ++y) {
        placeRow(block.rows + block.stride * y, block.first, block.width, target + step * y);
    }
}

// Result rows are the block's columns, in the given orders.
void PlaceColumns(const BitBlock& block, Order rowOrder, Order columnOrder, DibImage& result) {
    if (block.width == 0 || block.height == 0) return;
    const std::uint8_t* rows = block.rows;
    std::ptrdiff_t stride = block.stride;
    std::ptrdiff_t resultStride = result.RowBytes();
    std::uint8_t* resultRows = result.bits;
    if (columnOrder == Order::kReversed) {
        rows += stride * (block.height - 1);
        stride = -stride;
    }
    if (rowOrder == Order::kReversed) {
        resultRows += resultStride * (block.width - 1);
        resultStride = -resultStride;
    }
    platform::KernelsOf<TurnKernels>().transposeBits(rows, stride, block.width, block.height, resultRows,
                                                     resultStride);
}

// A new image with the columns of a block as rows. Null when memory runs out.
ImagePtr Transposed(const BitBlock& block, Order rowOrder, Order columnOrder) {
    if (block.first != 0) {
        const ImagePtr cut = DibImage::NewUncleared(block.width, block.height, 1);
        if (!cut) return nullptr;
        PlaceRows(block, Order::kAsStored, Order::kAsStored, *cut);
        return Transposed(BitBlock(*cut), rowOrder, columnOrder);
    }
    ImagePtr result = DibImage::NewUncleared(block.height, block.width, 1);
    if (result) PlaceColumns(block, rowOrder, columnOrder, *result);
    return result;
}

// How a turn makes its result's rows, by orientation code.
struct Orientation {
    bool isTransposed;  // they are the block's columns
    Order rows = Order::kAsStored;
    Order columns = Order::kAsStored;
};
constexpr Orientation kOrientations[] = {
    {false},
    {true, Order::kReversed, Order::kAsStored},
    {false, Order::kReversed, Order::kReversed},
    {true, Order::kAsStored, Order::kReversed},
    {false, Order::kReversed, Order::kAsStored},
    {true, Order::kReversed, Order::kReversed},
};

ImagePtr Turned(const BitBlock& block, const Orientation& orientation) {
    if (orientation.isTransposed) return Transposed(block, orientation.rows, orientation.columns);
    ImagePtr result = DibImage::NewUncleared(block.width, block.height, 1);
    if (result) PlaceRows(block, orientation.rows, orientation.columns, *result);
    return result;
}

ImagePtr Black(int width, int height) {
    ImagePtr result = DibImage::NewUncleared(width, height, 1);
    if (result) std::memset(result->bits, 0, result->header->biSizeImage);
    return result;
}

}  // namespace

ImagePtr TurnedBlock(const DibImage& image, const BlockRect& block, std::uint16_t code) {
    const Orientation& orientation = kOrientations[code < std::size(kOrientations) ? code : 0];
    const Rect whole{0, 0, static_cast<std::int16_t>(image.Width() - 1),
                     static_cast<std::int16_t>(image.Height() - 1)};
    const bool isUpsideDown = block.bottom > block.top;
    Rect cut = RectOf(block);
    if (isUpsideDown) std::swap(cut.y0, cut.y1);
    cut = Intersection(cut, whole);
    if (cut.IsEmpty()) return nullptr;
    if (isUpsideDown) {  // has nothing to copy: black
        return orientation.isTransposed ? Black(cut.Height(), cut.Width()) : Black(cut.Width(), cut.Height());
    }
    return Turned(BitBlock(image, cut.x0, cut.y0, cut.Width(), cut.Height()), orientation);
}

ImagePtr TurnedWhole(const DibImage& image, int angle) {
    switch (angle) {
        case 0: {
            ImagePtr copy = DibImage::NewUncleared(image.Width(), image.Height(), 1);
            if (copy) copy->CopyBitsFrom(image);
            return copy;
        }
        case 90:
        case 180:
        case 270: return Turned(BitBlock(image), kOrientations[angle / 90]);
        default: return nullptr;
    }
}

ImagePtr Flipped(const DibImage& image) {
    ImagePtr result = DibImage::BlankLike(image);
    if (!result) return nullptr;
    const int lastRow = image.Height() - 1;
    for (int y = 0; y <= lastRow; ++y) {
        std::memcpy(result->Row(y), image.Row(lastRow - y), image.RowBytes());
    }
    return result;
}

ImagePtr Mirrored(const DibImage& image) {
    ImagePtr result = DibImage::BlankLike(image);
    if (!result) return nullptr;
    result->CopyBitsFrom(image);
    PlaceRows(BitBlock(image), Order::kAsStored, Order::kReversed, *result);
    // Bits past the width stay, as an exchange of pixels leaves them.
    const int lastByte = image.Width() / 8, pixels = image.Width() % 8;
    for (int y = 0; y < image.Height() && pixels != 0; ++y) {
        result->Row(y)[lastByte] |= static_cast<std::uint8_t>(image.Row(y)[lastByte] & 0xFF >> pixels);
    }
    return result;
}

}  // namespace tavrix
