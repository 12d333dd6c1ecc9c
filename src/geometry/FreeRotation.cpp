// SPDX-License-Identifier: MIT
#include "geometry/FreeRotation.h"

#include <cmath>
#include <cstring>
#include <optional>

#include "geometry/InterpolationKernels.h"
#include "geometry/SineCosine.h"
#include "platform/CpuFeatures.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kBackground = 255;

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

}  // namespace

ImagePtr RotatedFreely(const DibImage& source, double angle, std::int32_t clockwise) {
    const std::optional<Turn> turn =
        PlanTurn(angle, clockwise, source.Width(), source.Height(), source.Is24Bit());
    if (!turn) return nullptr;
    ImagePtr result = DibImage::NewUncleared(turn->width, turn->height, source.header->biBitCount);
    if (!result) return nullptr;
    if (source.Is1Bit()) {
        std::memset(result->bits, 0, result->header->biSizeImage);
    } else {
        DrawTurned(*turn, source, *result);
    }
    return result;
}

}  // namespace tavrix
