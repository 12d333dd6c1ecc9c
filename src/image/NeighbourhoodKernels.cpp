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

void MeanRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
    constexpr unsigned kNinth = 7282;  // 2^16 / 9, rounded up: right for all sums up to 2295
    for (int x = 0; x < count; ++x) {
        const auto sum =
            static_cast<std::uint16_t>(before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x] +
                                       row[x + 1] + after[x - 1] + after[x] + after[x + 1]);
        target[x] = static_cast<Byte>(sum * kNinth >> 16);
    }
}

void SharpenRow(const Byte* before, const Byte* row, const Byte* after, int count, float factor,
                Byte* target) {
#ifndef TAVRIX_PLAIN_KERNELS
    const auto at = [=](int x) {
        const auto word = [x](const Byte* from, int dx) { return LoadWords(from + x + dx); };
        const auto three = [=](const Byte* from) {
            return AddWords(AddWords(word(from, -1), word(from, 1)), word(from, 0));
        };
        const Vector around =
            AddWords(AddWords(three(before), three(after)), AddWords(word(row, -1), word(row, 1)));
        StoreWords(target + x, SubtractWords(TimesFactor(word(row, 0), factor), around));
    };
    if (count >= kVectorWords) {
        for (int x = 0; x + kVectorWords <= count; x += kVectorWords) at(x);
        at(count - kVectorWords);
        return;
    }
#endif
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x + 1] + after[x - 1] +
                        after[x] + after[x + 1];
        const int value = static_cast<int>(factor * static_cast<float>(row[x])) - sum;
        target[x] = static_cast<Byte>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
}

}  // namespace

const NeighbourhoodKernels NeighbourhoodKernels::TAVRIX_KERNEL_LEVEL{
    .sobelRow = SobelRow, .edgeRow = EdgeRow, .meanRow = MeanRow, .sharpenRow = SharpenRow};

}  // namespace tavrix
