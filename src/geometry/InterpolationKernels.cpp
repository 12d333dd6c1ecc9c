// SPDX-License-Identifier: MIT
#include "geometry/InterpolationKernels.h"

#include <cstring>

#include "platform/Vectors.h"

namespace tavrix {
namespace {

constexpr int kRun = 64;  // pixels whose positions are computed at a time

// Positions of a run of pixels: offset of the first of the four neighbours, and the weights of the others.
struct Positions {
    std::uint32_t offset[kRun];
    double x[kRun];
    double y[kRun];

    void Compute(const TurnedRow& row, std::uint32_t pixelBytes, std::uint32_t rowBytes, int first,
                 int count) {
        for (int i = 0; i < count; ++i) {
            const double sourceX = row.SourceX(first + i), sourceY = row.SourceY(first + i);
            const int wholeX = static_cast<int>(sourceX), wholeY = static_cast<int>(sourceY);
            offset[i] = static_cast<std::uint32_t>(wholeY) * rowBytes +
                        static_cast<std::uint32_t>(wholeX) * pixelBytes;
            x[i] = sourceX - wholeX;
            y[i] = sourceY - wholeY;
        }
    }
};

template <class Number>
std::uint32_t Read(const std::uint8_t* from) {
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
}

// The value between four neighbours; the written order decides the last bit.
int Blend(double x, double y, std::uint32_t p00, std::uint32_t p10, std::uint32_t p01, std::uint32_t p11) {
    const auto value = [](std::uint32_t p) { return static_cast<double>(static_cast<int>(p)); };
    return static_cast<int>(x * (y * value(p11) + (1 - y) * value(p10)) +
                            (1 - x) * ((1 - y) * value(p00) + y * value(p01)));
}

void ExactGray(const TurnedRow& row, const std::uint8_t* source, std::uint32_t rowBytes, int first, int last,
               std::uint8_t* target) {
    Positions at;
    std::uint32_t quad[kRun];  // the four neighbours, a byte each
    for (int start = first; start < last; start += kRun) {
        const int count = last - start < kRun ? last - start : kRun;
        at.Compute(row, 1, rowBytes, start, count);
        for (int i = 0; i < count; ++i) {
            const std::uint8_t* from = source + at.offset[i];
            quad[i] = Read<std::uint16_t>(from) | Read<std::uint16_t>(from + rowBytes) << 16;
        }
        for (int i = 0; i < count; ++i) {
            const std::uint32_t q = quad[i];
            target[start + i] = static_cast<std::uint8_t>(
                Blend(at.x[i], at.y[i], q & 255, q >> 8 & 255, q >> 16 & 255, q >> 24));
        }
    }
}

void ExactColor(const TurnedRow& row, const std::uint8_t* source, std::uint32_t rowBytes, int first, int last,
                std::uint8_t* target) {
    Positions at;
    // Bytes of the upper and lower two neighbours: blue, green, red, blue and green, red.
    std::uint32_t near4[kRun], near2[kRun], far4[kRun], far2[kRun], pixel[kRun];
    for (int start = first; start < last; start += kRun) {
        const int count = last - start < kRun ? last - start : kRun;
        at.Compute(row, 3, rowBytes, start, count);
        for (int i = 0; i < count; ++i) {
            const std::uint8_t* from = source + at.offset[i];
            near4[i] = Read<std::uint32_t>(from);
            near2[i] = Read<std::uint16_t>(from + 4);
            far4[i] = Read<std::uint32_t>(from + rowBytes);
            far2[i] = Read<std::uint16_t>(from + rowBytes + 4);
        }
        for (int i = 0; i < count; ++i) {
            const double x = at.x[i], y = at.y[i];
            const int blue = Blend(x, y, near4[i] & 255, near4[i] >> 24, far4[i] & 255, far4[i] >> 24);
            const int green =
                Blend(x, y, near4[i] >> 8 & 255, near2[i] & 255, far4[i] >> 8 & 255, far2[i] & 255);
            const int red =
                Blend(x, y, near4[i] >> 16 & 255, near2[i] >> 8, far4[i] >> 16 & 255, far2[i] >> 8);
            pixel[i] = static_cast<std::uint32_t>(blue | green << 8 | red << 16);
        }
        for (int i = 0; i < count; ++i) std::memcpy(target + 3 * (start + i), &pixel[i], 3);
    }
}

#if defined(__AVX2__) && !defined(TAVRIX_PLAIN_KERNELS)
// Nearly every value is found in float, for eight pixels at a time, in units of 2^-16. It errs by 9 units at
// most, so that it is the rule's unless a whole number lies within kDoubt units of it; those in doubt are
// computed in double.
//
// Units by which each step may err, half a one of them by its rounding: the way to a neighbour times a
// rounded weight 1.5; left and right 2; their difference 4.5; that times a weight 6; the sum 8.5; as a whole
// number 9.
constexpr int kLanes = 8;
constexpr int kDoubt = 16;

// Of eight pixels, from where each starts: the first four bytes and, for color, the next four.
struct Eight {
    Vector low;
    Vector high;
};

template <int kPixelBytes>
[[gnu::always_inline]] inline Eight LoadEight(const Byte* source, const std::size_t* offset,
                                              std::size_t start) {
    const auto at = [&](int i) { return source + (start + offset[i]); };
    const auto joined = [](__m128i first, __m128i second) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    };
    if constexpr (kPixelBytes == 1) {
        const auto number = [&](int i) { return static_cast<int>(Read<std::uint32_t>(at(i))); };
        const auto four = [&](int i) {
            return _mm_setr_epi32(number(i), number(i + 1), number(i + 2), number(i + 3));
        };
        return {joined(four(0), four(4)), Vector{}};
    } else {
        const auto pair = [&](int i) {
            const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at(i)));
            return _mm_castpd_si128(
                _mm_loadh_pd(_mm_castsi128_pd(first), reinterpret_cast<const double*>(at(i + 1))));
        };
        const __m256 outer = _mm256_castsi256_ps(joined(pair(0), pair(4)));
        const __m256 inner = _mm256_castsi256_ps(joined(pair(2), pair(6)));
        return {_mm256_castps_si256(_mm256_shuffle_ps(outer, inner, 0x88)),
                _mm256_castps_si256(_mm256_shuffle_ps(outer, inner, 0xDD))};
    }
}

// Byte kIndex of every 32-bit lane, times 2^16.
template <int kIndex>
[[gnu::always_inline]] inline Vector Scaled(Vector bytes) {
    constexpr int kFirst = 0x80008080 | kIndex << 16, kNext = 4 << 16;
    return _mm256_shuffle_epi8(bytes, _mm256_broadcastsi128_si256(_mm_setr_epi32(
                                          kFirst, kFirst + kNext, kFirst + 2 * kNext, kFirst + 3 * kNext)));
}

// One byte of eight pixels: the four neighbours, times 2^16.
struct Quad {
    Vector p00, p10, p01, p11;

    // The value between them plus kDoubt.
    [[gnu::always_inline]] Vector Estimate(__m256 x, __m256 y) const {
        const auto between = [y](Vector near, Vector far) {
            const __m256 way = _mm256_cvtepi32_ps(_mm256_sub_epi32(far, near));
            return _mm256_add_ps(_mm256_cvtepi32_ps(near), _mm256_mul_ps(y, way));
        };
        const __m256 left = between(p00, p01), right = between(p10, p11);
        const __m256 value = _mm256_add_ps(left, _mm256_mul_ps(x, _mm256_sub_ps(right, left)));
        return _mm256_add_epi32(_mm256_cvtps_epi32(value), _mm256_set1_epi32(kDoubt));
    }
    // The lanes of four equal neighbours, whose value is certain, if they have weights.
    [[gnu::always_inline]] Vector IsFlat(Vector estimate) const {
        const auto equal = [](Vector a, Vector b) { return _mm256_cmpeq_epi32(a, b); };
        const Vector rows = _mm256_and_si256(equal(p00, p01), equal(p10, p11));
        const Vector expected = _mm256_add_epi32(p00, _mm256_set1_epi32(kDoubt));
        return _mm256_and_si256(rows, _mm256_and_si256(equal(p00, p10), equal(estimate, expected)));
    }
};

// The lanes whose value is in doubt unless they are flat.
[[gnu::always_inline]] inline Vector IsNearWhole(Vector estimate) {
    const Vector distant = _mm256_and_si256(estimate, _mm256_set1_epi32(0x10000 - 2 * kDoubt));
    return _mm256_cmpeq_epi32(distant, Vector{});
}

[[gnu::always_inline]] inline unsigned LanesOf(Vector mask) {
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(mask)));
}

// The third bytes of estimates, side by side.
[[gnu::always_inline]] inline void Write(const Vector (&gray)[1], Byte* target) {
    const Vector bytes = _mm256_shuffle_epi8(gray[0], _mm256_set1_epi32(0x0E0A0602));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target),
                     _mm_unpacklo_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1)));
}
[[gnu::always_inline]] inline void Write(const Vector (&color)[3], Byte* target) {
    const Vector blue = _mm256_srli_epi32(color[0], 16);
    const Vector green = _mm256_and_si256(_mm256_srli_epi32(color[1], 8), _mm256_set1_epi32(0xFF00));
    const Vector red = _mm256_and_si256(color[2], _mm256_set1_epi32(0xFF0000));
    const Vector pixels = _mm256_or_si256(_mm256_or_si256(blue, green), red);
    const __m128i packing = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const Vector halves = _mm256_shuffle_epi8(pixels, _mm256_broadcastsi128_si256(packing));
    const Vector bytes = _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
    Store16(target, _mm256_castsi256_si128(bytes));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 16), _mm256_extracti128_si256(bytes, 1));
}

// Writes eight pixels. Gives a bit for each that is in doubt.
template <int kPixelBytes>
[[gnu::always_inline]] inline unsigned EstimateEight(const Byte* source, std::uint32_t rowBytes,
                                                     std::size_t start, const TurnedColumns& columns,
                                                     int column, Byte* target) {
    const Eight near = LoadEight<kPixelBytes>(source, columns.offset + column, start);
    const Eight far = LoadEight<kPixelBytes>(source, columns.offset + column, start + rowBytes);
    Quad quads[kPixelBytes];
    if constexpr (kPixelBytes == 1) {
        quads[0] = {Scaled<0>(near.low), Scaled<1>(near.low), Scaled<0>(far.low), Scaled<1>(far.low)};
    } else {
        quads[0] = {Scaled<0>(near.low), Scaled<3>(near.low), Scaled<0>(far.low), Scaled<3>(far.low)};
        quads[1] = {Scaled<1>(near.low), Scaled<0>(near.high), Scaled<1>(far.low), Scaled<0>(far.high)};
        quads[2] = {Scaled<2>(near.low), Scaled<1>(near.high), Scaled<2>(far.low), Scaled<1>(far.high)};
    }
    const __m256 x = _mm256_loadu_ps(columns.x + column), y = _mm256_loadu_ps(columns.y + column);
    Vector estimates[kPixelBytes];
    for (int k = 0; k < kPixelBytes; ++k) estimates[k] = quads[k].Estimate(x, y);
    Write(estimates, target);

    Vector least = estimates[0];  // of the lower words
    for (int k = 1; k < kPixelBytes; ++k) least = _mm256_min_epu16(least, estimates[k]);
    if (LanesOf(IsNearWhole(least)) == 0) return 0;
    Vector inDoubt{};
    for (int k = 0; k < kPixelBytes; ++k) {
        inDoubt = _mm256_or_si256(
            inDoubt, _mm256_andnot_si256(quads[k].IsFlat(estimates[k]), IsNearWhole(estimates[k])));
    }
    return LanesOf(inDoubt);
}

// One pixel in double.
template <int kPixelBytes>
void Settle(const TurnedRow& row, const Byte* source, std::uint32_t rowBytes, int column, Byte* target) {
    const double sourceX = row.SourceX(column), sourceY = row.SourceY(column);
    const int wholeX = static_cast<int>(sourceX), wholeY = static_cast<int>(sourceY);
    const double x = sourceX - wholeX, y = sourceY - wholeY;
    const Byte* near = source + static_cast<std::ptrdiff_t>(wholeY) * rowBytes + wholeX * kPixelBytes;
    const Byte* far = near + rowBytes;
    for (int k = 0; k < kPixelBytes; ++k) {
        target[k] =
            static_cast<Byte>(Blend(x, y, near[k], near[kPixelBytes + k], far[k], far[kPixelBytes + k]));
    }
}

// A row aslant meets a new source row, hence a cache line, every 1 / sine columns, which no processor
// foresees: they are fetched kRowsAhead rows of the result before they are read.
constexpr int kRowsAhead = 8;

int ColumnsOfLine(double sine) {
    const double steepness = sine < 0 ? -sine : sine;
    return steepness > 0.5 ? 1 : steepness > 0.25 ? 2 : steepness > 0.125 ? 4 : kLanes;
}

template <int kPixelBytes, auto kExact>
void InterpolateRow(const TurnedRow& row, const TurnedColumns& columns, const Byte* source,
                    std::uint32_t rowBytes, int first, int last, Byte* target) {
    if (columns.offset == nullptr || last - first < kLanes) {
        kExact(row, source, rowBytes, first, last, target);
        return;
    }
    const auto bytes = [&](double right, double below) {
        return static_cast<std::size_t>(static_cast<int>(below)) * rowBytes +
               static_cast<std::size_t>(static_cast<int>(right)) * kPixelBytes;
    };
    const std::size_t start = bytes(row.a + row.halfWidth, row.b + row.halfHeight);
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(source) + start +
                                 bytes(kRowsAhead * row.sine, kRowsAhead * row.cosine);
    const int step = ColumnsOfLine(row.sine);
    for (int next = first; next < last; next += kLanes) {
        const int column = next < last - kLanes ? next : last - kLanes;  // the last overlap those before
        for (int i = 0; i < kLanes; i += step) {
            __builtin_prefetch(reinterpret_cast<const void*>(ahead + columns.offset[column + i]));
        }
        unsigned inDoubt = EstimateEight<kPixelBytes>(source, rowBytes, start, columns, column,
                                                      target + column * kPixelBytes);
        for (; inDoubt != 0; inDoubt &= inDoubt - 1) {
            const int single = column + __builtin_ctz(inDoubt);
            Settle<kPixelBytes>(row, source, rowBytes, single, target + single * kPixelBytes);
        }
    }
}
#else
template <int kPixelBytes, auto kExact>
void InterpolateRow(const TurnedRow& row, const TurnedColumns&, const std::uint8_t* source,
                    std::uint32_t rowBytes, int first, int last, std::uint8_t* target) {
    kExact(row, source, rowBytes, first, last, target);
}
#endif

}  // namespace

const InterpolationKernels InterpolationKernels::TAVRIX_KERNEL_LEVEL{.gray = InterpolateRow<1, ExactGray>,
                                                                     .color = InterpolateRow<3, ExactColor>};

}  // namespace tavrix
