// SPDX-License-Identifier: MIT
#include "image/NeighbourhoodKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

#ifndef TAVRIX_PLAIN_KERNELS
// The truncated root of a*a + b*b, of words. Single precision is exact here: the sums are below 2^21, and a
// root just below a whole number stays further below it than half of the last place.
inline Vector RootOfSquares(Vector a, Vector b) {
    const auto root = [](Vector pairs) {
        const Vector squares = TAVRIX_VECTOR(madd_epi16)(pairs, pairs);
        return TAVRIX_VECTOR(cvttps_epi32)(TAVRIX_VECTOR(sqrt_ps)(TAVRIX_VECTOR(cvtepi32_ps)(squares)));
    };
    return TAVRIX_VECTOR(packs_epi32)(root(TAVRIX_VECTOR(unpacklo_epi16)(a, b)),
                                      root(TAVRIX_VECTOR(unpackhi_epi16)(a, b)));
}

// Words times a factor in single precision, truncated.
inline Vector TimesFactor(Vector words, float factor) {
    const auto product = [factor](Vector longs) {
        return TAVRIX_VECTOR(cvttps_epi32)(
            TAVRIX_VECTOR(mul_ps)(TAVRIX_VECTOR(cvtepi32_ps)(longs), TAVRIX_VECTOR(set1_ps)(factor)));
    };
    return TAVRIX_VECTOR(packs_epi32)(product(TAVRIX_VECTOR(unpacklo_epi16)(words, Vector{})),
                                      product(TAVRIX_VECTOR(unpackhi_epi16)(words, Vector{})));
}
#endif

// The root of a sum of squares below 2^21, truncated and limited to 255.
inline int RootAt(int square) {
    const int magnitude = static_cast<int>(__builtin_sqrtf(static_cast<float>(square)));
    return magnitude < 255 ? magnitude : 255;
}

void SobelRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
#ifndef TAVRIX_PLAIN_KERNELS
    const auto at = [=](int x) {
        const auto word = [x](const Byte* from, int dx) { return LoadWords(from + x + dx); };
        const Vector diagonal = SubtractWords(word(after, 1), word(before, -1));
        const Vector antidiagonal = SubtractWords(word(before, 1), word(after, -1));
        const Vector across = SubtractWords(word(row, 1), word(row, -1));
        const Vector down = SubtractWords(word(after, 0), word(before, 0));
        const Vector gx = AddWords(AddWords(diagonal, antidiagonal), AddWords(across, across));
        const Vector gy = AddWords(SubtractWords(diagonal, antidiagonal), AddWords(down, down));
        StoreWords(target + x, RootOfSquares(gx, gy));
    };
    if (count >= kVectorWords) {
        for (int x = 0; x + kVectorWords <= count; x += kVectorWords) at(x);
        at(count - kVectorWords);
        return;
    }
#endif
    for (int x = 0; x < count; ++x) {
        const int diagonal = after[x + 1] - before[x - 1], antidiagonal = before[x + 1] - after[x - 1];
        const int gx = diagonal + antidiagonal + 2 * (row[x + 1] - row[x - 1]);
        const int gy = diagonal - antidiagonal + 2 * (after[x] - before[x]);
        target[x] = static_cast<Byte>(RootAt(gx * gx + gy * gy));
    }
}

void EdgeRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
    // A component at the limit decides alone, so that the squares fit 16 bits.
    constexpr std::int16_t kLimit = 127;
    const auto magnitude = [](std::int16_t value) {
        const auto size = static_cast<std::int16_t>(value < 0 ? -value : value);
        return size < kLimit ? size : kLimit;
    };
    for (int x = 0; x < count; ++x) {
        const int diagonal = after[x + 1] - before[x - 1], antidiagonal = before[x + 1] - after[x - 1];
        const auto gx = static_cast<std::int16_t>(diagonal + antidiagonal + 2 * (row[x + 1] - row[x - 1]));
        const auto gy = static_cast<std::int16_t>(diagonal - antidiagonal + 2 * (after[x] - before[x]));
        const std::int16_t sizeY = magnitude(gy), sizeX = magnitude(gx);
        const auto squares = static_cast<std::int16_t>(sizeX * sizeX + sizeY * sizeY);
        target[x] = squares >= kLimit * kLimit ? 0 : 255;
    }
}

#ifndef TAVRIX_PLAIN_KERNELS
// Words of the even and the odd columns.
struct Columns {
    Vector even, odd;
};
inline Columns Add(const Columns& a, const Columns& b) {
    return {AddWords(a.even, b.even), AddWords(a.odd, b.odd)};
}
inline Columns Split(Vector bytes) {
    return {bytes & FillWords(255), TAVRIX_VECTOR(srli_epi16)(bytes, 8)};
}

// Sums of three neighbours.
inline Columns SumsOf3(const Byte* row) {
    // Of the column before an even one, and of the one after an odd one.
    const Vector before = Load(row - 1), after = Load(row + 1);
#ifdef __AVX2__
    const Vector pairs = _mm256_maddubs_epi16(Load(row), Fill(1));
    return {AddWords(Split(before).even, pairs), AddWords(pairs, Split(after).odd)};
#else
    const Columns first = Split(before), last = Split(after);
    const Vector pairs = AddWords(first.odd, last.even);
    return {AddWords(first.even, pairs), AddWords(pairs, last.odd)};
#endif
}

// Bytes, as words, times a factor in fixed point, truncated.
inline Vector TimesFixed(Vector words, Vector fixed) {
    constexpr int kShift = 16 - SharpeningFactor::kFixedBits;
    return TAVRIX_VECTOR(mulhi_epu16)(TAVRIX_VECTOR(slli_epi16)(words, kShift), fixed);
}

// Words limited to 0..255, as bytes.
inline Vector Limited(const Columns& words) {
    const Vector bytes = TAVRIX_VECTOR(packus_epi16)(words.even, words.odd);  // the even ones, the odd ones
#ifdef __AVX2__
    return _mm256_unpacklo_epi8(bytes, _mm256_srli_si256(bytes, 8));
#else
    return _mm_unpacklo_epi8(bytes, _mm_srli_si128(bytes, 8));
#endif
}
#endif

void MeanRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
    constexpr unsigned kNinth = 7282;  // 2^16 / 9, rounded up: right for all sums up to 2295
#ifndef TAVRIX_PLAIN_KERNELS
    const auto at = [=](int x) {
        const Columns sums = Add(Add(SumsOf3(before + x), SumsOf3(row + x)), SumsOf3(after + x));
        const auto ninth = [](Vector sum) { return TAVRIX_VECTOR(mulhi_epu16)(sum, FillWords(kNinth)); };
        Store(target + x, ninth(sums.even) | TAVRIX_VECTOR(slli_epi16)(ninth(sums.odd), 8));
    };
    if (count >= kVectorBytes) {
        for (int x = 0; x + kVectorBytes <= count; x += kVectorBytes) at(x);
        at(count - kVectorBytes);
        return;
    }
#endif
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x] + row[x + 1] +
                        after[x - 1] + after[x] + after[x + 1];
        target[x] = static_cast<Byte>(sum * kNinth >> 16);
    }
}

#ifndef TAVRIX_PLAIN_KERNELS
template <class Product>
inline void SharpenVectors(const Byte* before, const Byte* row, const Byte* after, int count, Product product,
                           Byte* target) {
    const auto at = [=](int x) {
        const Columns beside = Add(Split(Load(row + x - 1)), Split(Load(row + x + 1)));
        const Columns around = Add(Add(SumsOf3(before + x), SumsOf3(after + x)), beside);
        const Columns centre = Split(Load(row + x));
        Store(target + x, Limited({SubtractWords(product(centre.even), around.even),
                                   SubtractWords(product(centre.odd), around.odd)}));
    };
    for (int x = 0; x + kVectorBytes <= count; x += kVectorBytes) at(x);
    at(count - kVectorBytes);
}
#endif

void SharpenRow(const Byte* before, const Byte* row, const Byte* after, int count,
                const SharpeningFactor& factor, Byte* target) {
    const float single = factor.single;
#ifndef TAVRIX_PLAIN_KERNELS
    if (count >= kVectorBytes) {
        if (factor.fixed != 0) {
            const Vector fixed = FillWords(factor.fixed);
            const auto product = [fixed](Vector words) { return TimesFixed(words, fixed); };
            SharpenVectors(before, row, after, count, product, target);
        } else {
            const auto product = [single](Vector words) { return TimesFactor(words, single); };
            SharpenVectors(before, row, after, count, product, target);
        }
        return;
    }
#endif
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x + 1] + after[x - 1] +
                        after[x] + after[x + 1];
        const int value = static_cast<int>(single * static_cast<float>(row[x])) - sum;
        target[x] = static_cast<Byte>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
}

}  // namespace

const NeighbourhoodKernels NeighbourhoodKernels::TAVRIX_KERNEL_LEVEL{
    .sobelRow = SobelRow, .edgeRow = EdgeRow, .meanRow = MeanRow, .sharpenRow = SharpenRow};

}  // namespace tavrix
