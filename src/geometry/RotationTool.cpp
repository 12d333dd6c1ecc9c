// SPDX-License-Identifier: MIT
#include "geometry/RotationTool.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "geometry/InterpolationKernels.h"
#include "geometry/SineCosine.h"
#include "geometry/TurnKernels.h"
#include "image/DibImage.h"
#include "platform/OutputFile.h"

namespace tavrix {
namespace {

using ImagePtr = std::unique_ptr<DibImage>;

constexpr std::uint8_t kBackground = 255;

std::int16_t Wrapped(std::int32_t value) {
    return static_cast<std::int16_t>(value);
}

ImagePtr Created(int width, int height, int bitCount) {
    auto created = std::make_unique<DibImage>();
    if (!created->Create(width, height, bitCount)) return nullptr;
    return created;
}

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
    if (block.width == 0) return;
    const auto& kernels = platform::KernelsOf<TurnKernels>();
    const auto placeRow = columnOrder == Order::kAsStored ? kernels.copyBits : kernels.reverseBits;
    for (int y = 0; y < block.height; ++y) {
        const int row = rowOrder == Order::kAsStored ? y : block.height - 1 - y;
        placeRow(block.rows + block.stride * y, block.first, block.width, result.Row(row));
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
        const ImagePtr cut = Created(block.width, block.height, 1);
        if (!cut) return nullptr;
        PlaceRows(block, Order::kAsStored, Order::kAsStored, *cut);
        return Transposed(BitBlock(*cut), rowOrder, columnOrder);
    }
    ImagePtr result = Created(block.height, block.width, 1);
    if (result) PlaceColumns(block, rowOrder, columnOrder, *result);
    return result;
}

// Puts the inclusive range low .. high inside 0 .. side - 1; false when nothing is left.
bool Clip(int& low, int& high, int side) {
    low = std::max(low, 0);
    high = std::min(high, side - 1);
    return low <= high;
}

// Free rotation: the angle's sine and cosine, direction included, and the size of the result.
struct Turn {
    double sine;
    double cosine;
    int width;
    int height;
};

double RoundedToFloat(double value) {
    return static_cast<double>(static_cast<float>(value));
}

std::optional<Turn> PlanTurn(double angle, std::int32_t clockwise, int width, int height,
                             bool singlePrecision) {
    constexpr double kHalfTurnShare = 0.005555555555555556;   // 1 / 180
    constexpr double kPi = 3.1416159;                         // the value that all results rest on
    constexpr double kQuarterTurn = 90.0, kFullTurn = 360.0;  // degrees
    if (!std::isfinite(angle)) return std::nullopt;
    bool isClockwise = static_cast<std::uint16_t>(clockwise) != 0;
    if (angle < 0) {
        angle = -angle;
        isClockwise = !isClockwise;
    }
    const bool beyondQuarter = angle > kQuarterTurn;
    if (beyondQuarter) angle = std::fmod(angle, kFullTurn);
    const double radians = angle * kHalfTurnShare * kPi;
    auto [sine, cosine] = SineCosineOf(radians);
    if (singlePrecision) {
        sine = RoundedToFloat(sine);
        cosine = RoundedToFloat(cosine);
    }
    // Up to a quarter turn the signs stay: just before 90 degrees the cosine is negative already.
    const double c = beyondQuarter ? std::fabs(cosine) : cosine;
    const double s = beyondQuarter ? std::fabs(sine) : sine;
    const int newWidth = static_cast<int>(width * c + height * s);
    const int newHeight = static_cast<int>(height * c + width * s);
    if (newWidth < 0 || newWidth > kMaxSide || newHeight < 0 || newHeight > kMaxSide) return std::nullopt;
    return Turn{isClockwise ? -sine : sine, cosine, newWidth, newHeight};
}

struct Span {
    int first;
    int last;  // exclusive
};

// The first column of the span where the predicate, true before and false after, is false.
template <class Predicate>
int Boundary(Span span, Predicate predicate) {
    while (span.first < span.last) {
        const int middle = (span.first + span.last) / 2;
        if (predicate(middle)) {
            span.first = middle + 1;
        } else {
            span.last = middle;
        }
    }
    return span.first;
}

// The columns of the span where a position lies within 0 .. limit. Positions are rounded sums, hence
// monotone, so that the columns form one run.
template <class Position>
Span Within(Span span, bool rising, double limit, Position position) {
    const auto below = [&](int x) { return position(x) < 0; };
    const auto above = [&](int x) { return position(x) > limit; };
    if (rising) {
        span.first = Boundary(span, below);
        span.last = Boundary(span, [&](int x) { return !above(x); });
    } else {
        span.first = Boundary(span, above);
        span.last = Boundary(span, [&](int x) { return !below(x); });
    }
    return span;
}

// One pixel next to the source's last rows, where a neighbour may lie outside: it reads 0.
void InterpolatePixel(const TurnedRow& row, const DibImage& source, int x, int pixelBytes,
                      std::uint8_t* target) {
    const double sourceX = row.SourceX(x), sourceY = row.SourceY(x);
    const int column = static_cast<int>(sourceX), line = static_cast<int>(sourceY);
    const double fx = sourceX - column, fy = sourceY - line;
    for (int k = 0; k < pixelBytes; ++k) {
        const int left = column * pixelBytes + k, right = left + pixelBytes;
        const int p00 = source.GetPixel(left, line), p10 = source.GetPixel(right, line);
        const int p01 = source.GetPixel(left, line + 1), p11 = source.GetPixel(right, line + 1);
        target[x * pixelBytes + k] = static_cast<std::uint8_t>(fx * (fy * p11 + (1 - fy) * p10) +
                                                               (1 - fx) * ((1 - fy) * p00 + fy * p01));
    }
}

// Draws the turned source into result, whose depth is the same, 8 or 24 bits.
void DrawTurned(const Turn& turn, const DibImage& source, DibImage& result) {
    const int pixelBytes = source.header->biBitCount / 8;
    if (turn.sine == 0 && turn.cosine == 1) {
        const std::size_t bytes = static_cast<std::size_t>(source.Width()) * pixelBytes;
        for (int y = 0; y < source.Height(); ++y) std::memcpy(result.Row(y), source.Row(y), bytes);
        return;
    }
    const auto& kernels = platform::KernelsOf<InterpolationKernels>();
    const auto interpolate = pixelBytes == 1 ? kernels.gray : kernels.color;
    const int halfWidth = turn.width / 2, halfHeight = turn.height / 2;
    for (int y = 0; y < turn.height; ++y) {
        const int dy = y - halfHeight;
        const TurnedRow row{turn.sine,
                            turn.cosine,
                            static_cast<double>(halfWidth),
                            std::trunc(dy * turn.sine),
                            std::trunc(dy * turn.cosine),
                            static_cast<double>(source.Width() / 2),
                            static_cast<double>(source.Height() / 2)};
        const auto sourceX = [&](int x) { return row.SourceX(x); };
        const auto sourceY = [&](int x) { return row.SourceY(x); };
        const bool risingY = turn.sine < 0;
        Span span = Within({0, turn.width}, turn.cosine >= 0, source.Width() - 1, sourceX);
        span = Within(span, risingY, source.Height() - 1, sourceY);

        std::uint8_t* target = result.Row(y);
        const auto fill = [&](int first, int last) {
            std::memset(target + first * pixelBytes, kBackground,
                        static_cast<std::size_t>(last - first) * pixelBytes);
        };
        fill(0, span.first);
        fill(span.last, turn.width);
        // All but the columns that reach the source's last two rows run unchecked.
        const int lowest = source.Height() - 2;
        const auto isInner = [&](int x) { return sourceY(x) < lowest; };
        Span inner = span;
        if (risingY) {
            inner.last = Boundary(span, isInner);
        } else {
            inner.first = Boundary(span, [&](int x) { return !isInner(x); });
        }
        for (int x = span.first; x < inner.first; ++x) InterpolatePixel(row, source, x, pixelBytes, target);
        interpolate(row, source.bits, source.RowBytes(), inner.first, inner.last, target);
        for (int x = inner.last; x < span.last; ++x) InterpolatePixel(row, source, x, pixelBytes, target);
    }
}

DibImage* RotateFree(double angle, std::int32_t clockwise, const DibImage& source) {
    const std::optional<Turn> turn =
        PlanTurn(angle, clockwise, source.Width(), source.Height(), source.Is24Bit());
    if (!turn) return nullptr;
    ImagePtr result = Created(turn->width, turn->height, source.header->biBitCount);
    if (result && !source.Is1Bit()) DrawTurned(*turn, source, *result);
    return result.release();
}

}  // namespace

RotationTool::RotationTool(DibImage* imageToTurn)
    : image(imageToTurn),
      width(imageToTurn->Width()),
      rowBytes(imageToTurn->RowBytes()),
      height(imageToTurn->Height()),
      bitCount(imageToTurn->header->biBitCount) {}

bool RotationTool::RotateNodeRect(ComponentNode* node, std::uint16_t code) {
    BlockRect rect{node->left, node->top, node->right, node->bottom, static_cast<std::int16_t>(node->tag)};
    RotateRect(&rect, code);
    node->left = rect.left;
    node->top = rect.top;
    node->right = rect.right;
    node->bottom = rect.bottom;
    return true;
}

bool RotationTool::RotateRect(BlockRect* rect, std::uint16_t code) {
    const BlockRect from = *rect;
    switch (code) {
        case 1:
            *rect = {from.bottom, Wrapped(width - from.right), from.top, Wrapped(width - from.left),
                     from.tag};
            break;
        case 2:
            *rect = {Wrapped(width - from.left), Wrapped(height - from.top), Wrapped(width - from.right),
                     Wrapped(height - from.bottom), from.tag};
            break;
        case 3:
            *rect = {Wrapped(height - from.bottom), from.right, Wrapped(height - from.top), from.left,
                     from.tag};
            break;
        default: break;
    }
    if (rect->left > rect->right) std::swap(rect->left, rect->right);
    if (rect->bottom > rect->top) std::swap(rect->bottom, rect->top);
    return true;
}

DibImage* RotationTool::RotateBlock(BlockRect block, std::uint16_t code, DibImage* target) {
    ImagePtr cut(target);
    int left = block.left, right = block.right;
    int low = std::min(block.bottom, block.top), high = std::max(block.bottom, block.top);
    if (!Clip(left, right, width) || !Clip(low, high, height)) return nullptr;
    const int blockWidth = right - left + 1, blockHeight = high - low + 1;
    const bool isBlack = block.bottom > block.top;  // an upside-down block has nothing to copy
    const bool isTransposed = code == 1 || code == 3 || code == 5;
    const BitBlock source(*image, left, low, blockWidth, blockHeight);
    if (isTransposed && !isBlack) {
        return Transposed(source, code == 3 ? Order::kAsStored : Order::kReversed,
                          code == 1 ? Order::kAsStored : Order::kReversed)
            .release();
    }
    if (isTransposed ? !cut->Create(blockHeight, blockWidth, 1) : !cut->Create(blockWidth, blockHeight, 1)) {
        return nullptr;
    }
    if (!isBlack) {
        PlaceRows(source, code == 2 || code == 4 ? Order::kReversed : Order::kAsStored,
                  code == 2 ? Order::kReversed : Order::kAsStored, *cut);
    }
    return cut.release();
}

DibImage* RotationTool::RotateOneBit(DibImage* imageToTurn, int angle) {
    const BitBlock source(*imageToTurn);
    ImagePtr result;
    switch (angle) {
        case 0:
            result = Created(source.width, source.height, 1);
            if (result) result->CopyBitsFrom(*imageToTurn);
            break;
        case 90: result = Transposed(source, Order::kReversed, Order::kAsStored); break;
        case 180:
            result = Created(source.width, source.height, 1);
            if (result) PlaceRows(source, Order::kReversed, Order::kReversed, *result);
            break;
        case 270: result = Transposed(source, Order::kAsStored, Order::kReversed); break;
        default: break;
    }
    if (result) delete imageToTurn;
    return result.release();
}

DibImage* RotationTool::FlipOneBit(int mode, DibImage* imageToFlip) {
    if (mode != 1 && mode != 2) return nullptr;
    auto result = std::make_unique<DibImage>(imageToFlip);
    if (result->bits == nullptr) return nullptr;
    result->CopyBitsFrom(*imageToFlip);
    const int lastRow = imageToFlip->Height() - 1;
    if (mode == 1) {
        for (int y = 0; y <= lastRow; ++y) {
            std::memcpy(result->Row(y), imageToFlip->Row(lastRow - y), imageToFlip->RowBytes());
        }
    } else {
        PlaceRows(BitBlock(*imageToFlip), Order::kAsStored, Order::kReversed, *result);
        // Bits past the width stay, as an exchange of pixels leaves them.
        const int lastByte = imageToFlip->Width() / 8, pixels = imageToFlip->Width() % 8;
        for (int y = 0; y <= lastRow && pixels != 0; ++y) {
            result->Row(y)[lastByte] |=
                static_cast<std::uint8_t>(imageToFlip->Row(y)[lastByte] & 0xFF >> pixels);
        }
    }
    delete imageToFlip;
    return result.release();
}

DibImage* RotationTool::RotateGray(DibImage* imageToTurn, std::int32_t angle) {
    constexpr std::uint16_t kQuarterTurn = 90;  // degrees
    if (static_cast<std::uint16_t>(angle) == kQuarterTurn) return RotateGrayQuarter(imageToTurn);
    delete imageToTurn;
    return nullptr;
}

DibImage* RotationTool::RotateGrayQuarter(DibImage* imageToTurn) {
    const ImagePtr source(imageToTurn);
    ImagePtr result = Created(height, width, 8);
    if (!result) return nullptr;
    const std::ptrdiff_t stride = result->RowBytes();
    if (width > 0) {
        platform::KernelsOf<TurnKernels>().transposeBytes(source->bits, source->RowBytes(), width, height,
                                                          result->Row(width - 1), -stride);
    }
    result->WriteBmp(platform::kDebugDumpPath);
    return result.release();
}

DibImage* RotationTool::RotateFreeGray(double angle, std::int32_t clockwise, const DibImage* source) {
    return RotateFree(angle, clockwise, *source);
}

DibImage* RotationTool::RotateFreeColor(double angle, std::int32_t clockwise, const DibImage* source) {
    return RotateFree(angle, clockwise, *source);
}

}  // namespace tavrix
