// SPDX-License-Identifier: MIT
#include "geometry/FreeRotation.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

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

// The first column of the span where the predicate, true before and false after, is false; near the guess as
// a rule.
template <class Predicate>
int Boundary(Span span, double guess, Predicate predicate) {
    constexpr int kSlack = 2;  // columns
    const auto clamped = [&](double x) {
        return static_cast<int>(std::clamp(x, span.first * 1.0, span.last * 1.0));
    };
    const int before = clamped(guess - kSlack), after = clamped(guess + kSlack);
    if (before < span.last && predicate(before)) span.first = before + 1;
    if (after < span.last && !predicate(after)) span.last = after;
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
// monotone, so that the columns form one run. columnAt guesses the column of a position.
template <class Position, class Column>
Span Within(Span span, bool rising, double limit, Position position, Column columnAt) {
    const auto below = [&](int x) { return position(x) < 0; };
    const auto above = [&](int x) { return position(x) > limit; };
    if (rising) {
        span.first = Boundary(span, columnAt(0), below);
        span.last = Boundary(span, columnAt(limit), [&](int x) { return !above(x); });
    } else {
        span.first = Boundary(span, columnAt(limit), above);
        span.last = Boundary(span, columnAt(0), [&](int x) { return !below(x); });
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

// Between four equal neighbours the rule gives their value exactly where no weight has more than 45 bits
// behind the point, since every product is one of 53 bits then. Positions are sums rounded at the size of
// half the source, or products of a float.
bool HasShortWeights(const Turn& turn, const DibImage& source) {
    constexpr int kLongEnough = 512;          // pixels: a quarter of it, 128, is rounded to 2^-45
    constexpr double kSteepEnough = 0x1p-20;  // a float of this size is a multiple of 2^-43
    if (source.Width() >= kLongEnough && source.Height() >= kLongEnough) return true;
    return source.Is24Bit() && std::fabs(turn.sine) >= kSteepEnough && std::fabs(turn.cosine) >= kSteepEnough;
}

// What TurnedColumns points to, for one turn.
class ColumnTable {
  public:
    ColumnTable(const Turn& turn, const DibImage& source);
    TurnedColumns View() const { return {offset.data(), x.data(), y.data()}; }

  private:
    std::vector<std::size_t> offset;
    std::vector<float> x, y;
};

ColumnTable::ColumnTable(const Turn& turn, const DibImage& source) {
    constexpr double kMargin = 0x1p-30;  // a position of either order of summing errs by less than 2^-35
    if (!HasShortWeights(turn, source)) return;
    offset.resize(turn.width);
    x.resize(turn.width);
    y.resize(turn.width);
    const auto weight = [](double share) {
        const bool isCertain = share > kMargin && share < 1 - kMargin;
        return isCertain ? static_cast<float>(share) : std::numeric_limits<float>::quiet_NaN();
    };
    for (int column = 0; column < turn.width; ++column) {
        const double dx = column - turn.width / 2;
        const double right = dx * turn.cosine, below = -(dx * turn.sine);
        const double wholeX = std::floor(right), wholeY = std::floor(below);
        x[column] = weight(right - wholeX);
        y[column] = weight(below - wholeY);
        offset[column] = static_cast<std::size_t>(static_cast<int>(wholeY)) * source.RowBytes() +
                         static_cast<std::size_t>(static_cast<int>(wholeX)) * (source.header->biBitCount / 8);
    }
}

// A row of the result and its runs of columns: those with a source, those among them whose neighbours all lie
// in the source, and those of the latter that may use the table of columns. Where a position is rounded up to
// a whole pixel the table has the one before it, so that the source's first rows go without.
struct RowPlan {
    TurnedRow row;
    Span covered;
    Span inner;
    Span tabled;
};

RowPlan PlanRow(const Turn& turn, const DibImage& source, int y) {
    const int dy = y - turn.height / 2;
    const TurnedRow row{turn.sine,
                        turn.cosine,
                        static_cast<double>(turn.width / 2),
                        std::trunc(dy * turn.sine),
                        std::trunc(dy * turn.cosine),
                        static_cast<double>(source.Width() / 2),
                        static_cast<double>(source.Height() / 2)};
    const auto sourceX = [&](int x) { return row.SourceX(x); };
    const auto sourceY = [&](int x) { return row.SourceY(x); };
    const auto columnOfX = [&](double position) {
        return (position - row.a - row.halfWidth) / row.cosine + row.centre;
    };
    const auto columnOfY = [&](double position) {
        return (row.b + row.halfHeight - position) / row.sine + row.centre;
    };
    const bool risingY = turn.sine < 0;
    Span covered = Within({0, turn.width}, turn.cosine >= 0, source.Width() - 1, sourceX, columnOfX);
    covered = Within(covered, risingY, source.Height() - 1, sourceY, columnOfY);
    // All but the columns that reach the source's last two rows run unchecked.
    const int lowest = source.Height() - 2;
    const auto isInner = [&](int x) { return sourceY(x) < lowest; };
    constexpr int kFirstTabled = 2;
    const auto isTabled = [&](int x) { return sourceY(x) >= kFirstTabled; };
    Span inner = covered;
    if (risingY) {
        inner.last = Boundary(covered, columnOfY(lowest), isInner);
    } else {
        inner.first = Boundary(covered, columnOfY(lowest), [&](int x) { return !isInner(x); });
    }
    Span tabled = inner;
    if (risingY) {
        tabled.first = Boundary(inner, columnOfY(kFirstTabled), [&](int x) { return !isTabled(x); });
    } else {
        tabled.last = Boundary(inner, columnOfY(kFirstTabled), isTabled);
    }
    return {row, covered, inner, tabled};
}

// Draws what surrounds the tabled columns of a row.
void DrawSurround(const RowPlan& plan, const DibImage& source, InterpolationKernels::Interpolate* interpolate,
                  int width, std::uint8_t* target) {
    const int pixelBytes = source.header->biBitCount / 8;
    const auto fill = [&](int first, int last) {
        std::memset(target + first * pixelBytes, kBackground,
                    static_cast<std::size_t>(last - first) * pixelBytes);
    };
    const auto draw = [&](int first, int last) {
        for (int x = first; x < last; ++x) InterpolatePixel(plan.row, source, x, pixelBytes, target);
    };
    const auto drawInner = [&](int first, int last) {
        if (first < last) interpolate(plan.row, {}, source.bits, source.RowBytes(), first, last, target);
    };
    fill(0, plan.covered.first);
    draw(plan.covered.first, plan.inner.first);
    drawInner(plan.inner.first, plan.tabled.first);
    drawInner(plan.tabled.last, plan.inner.last);
    draw(plan.inner.last, plan.covered.last);
    fill(plan.covered.last, width);
}

// Draws the turned source into result, whose depth is the same, 8 or 24 bits: in tiles, so that what a row
// reads of the source, which it crosses aslant, is still in the cache for the next row.
void DrawTurned(const Turn& turn, const DibImage& source, DibImage& result) {
    const int pixelBytes = source.header->biBitCount / 8;
    if (turn.sine == 0 && turn.cosine == 1) {
        const std::size_t bytes = static_cast<std::size_t>(source.Width()) * pixelBytes;
        for (int y = 0; y < source.Height(); ++y) std::memcpy(result.Row(y), source.Row(y), bytes);
        return;
    }
    constexpr int kTileWidth = 512, kTileHeight = 64;  // pixels
    const auto& kernels = platform::KernelsOf<InterpolationKernels>();
    const auto interpolate = pixelBytes == 1 ? kernels.gray : kernels.color;
    const ColumnTable table(turn, source);
    const TurnedColumns columns = table.View();
    std::vector<RowPlan> band;
    for (int top = 0; top < turn.height; top += kTileHeight) {
        band.clear();
        for (int y = top; y < std::min(top + kTileHeight, turn.height); ++y) {
            band.push_back(PlanRow(turn, source, y));
            DrawSurround(band.back(), source, interpolate, turn.width, result.Row(y));
        }
        for (int left = 0; left < turn.width; left += kTileWidth) {
            for (std::size_t i = 0; i < band.size(); ++i) {
                const int first = std::max(left, band[i].tabled.first);
                const int last = std::min(left + kTileWidth, band[i].tabled.last);
                if (first >= last) continue;
                interpolate(band[i].row, columns, source.bits, source.RowBytes(), first, last,
                            result.Row(top + static_cast<int>(i)));
            }
        }
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
