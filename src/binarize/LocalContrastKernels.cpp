// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

using Columns = LocalContrastKernels::Columns;

constexpr int kShift = 20;  // levels
constexpr int kSquareFactor = LocalContrastKernels::kSquareFactor;

#ifndef TAVRIX_PLAIN_KERNELS
// The mean S / 25 as S * 5243 >> 17, exact for every sum of 25 bytes.
constexpr short kMeanFactor = 5243;

// The words of even columns, and of odd ones, the others being 0.
inline Vector Even(Vector words) {
    return words & TAVRIX_VECTOR(set1_epi32)(0xFFFF);
}
inline Vector Odd(Vector words) {
    return words & TAVRIX_VECTOR(set1_epi32)(~0xFFFF);
}
inline Vector AddLongs(Vector a, Vector b) {
    return TAVRIX_VECTOR(add_epi32)(a, b);
}

inline void SlideStep(const Byte* entering, Byte* leaving, const Columns& columns, int x, Vector factor) {
    const Vector in = LoadWords(entering), out = LoadWords(leaving + x);
    const Vector difference = SubtractWords(in, out);
    // in^2 - out^2 = (in - out) (in + out)
    const Vector sum = TAVRIX_VECTOR(mullo_epi16)(AddWords(in, out), factor);
    const auto add = [sum](std::int32_t* squares, Vector words) {
        Store(squares, AddLongs(Load(squares), TAVRIX_VECTOR(madd_epi16)(words, sum)));
    };
    Store(columns.sums + x, AddWords(Load(columns.sums + x), difference));
    add(columns.evenSquares + x / 2, Even(difference));
    add(columns.oddSquares + x / 2, Odd(difference));
    __builtin_memcpy(leaving + x, entering, kVectorWords);
}

inline Vector SumOf5(const std::uint16_t* words) {
    const Vector outer = AddWords(Load(words - 2), Load(words + 2));
    const Vector inner = AddWords(Load(words - 1), Load(words + 1));
    return AddWords(AddWords(outer, inner), Load(words));
}

// 0 or all bits a word: where 25 Q - S^2 is below the limit.
inline Vector LacksContrast(Vector sum, const std::int32_t* even, const std::int32_t* odd) {
    // The four columns that the windows of an even column and of the odd one after it share.
    const Vector shared = AddLongs(AddLongs(Load(odd - 1), Load(even)), AddLongs(Load(odd), Load(even + 1)));
    const auto spread = [sum](Vector squares, Vector words) {
        return TAVRIX_VECTOR(sub_epi32)(squares, TAVRIX_VECTOR(madd_epi16)(words, sum));
    };
    const Vector evenSpread = spread(AddLongs(shared, Load(even - 1)), Even(sum));
    const Vector oddSpread = spread(AddLongs(shared, Load(odd + 1)), Odd(sum));
    const Vector signs = TAVRIX_VECTOR(srli_epi32)(evenSpread, 16) | Odd(oddSpread);
    return TAVRIX_VECTOR(srai_epi16)(signs, 15);
}

// 255 or 0 a word, for the values of kVectorWords pixels.
inline Vector Contrast(const Byte* values, const Columns& columns, int x, Vector global) {
    const Vector sum = SumOf5(columns.sums + x);
    const Vector mean = TAVRIX_VECTOR(srli_epi16)(TAVRIX_VECTOR(mulhi_epu16)(sum, FillWords(kMeanFactor)), 1);
    const Vector above = SubtractWords(mean, global);
    const Vector isWeak = LacksContrast(sum, columns.evenSquares + x / 2, columns.oddSquares + x / 2);
    const Vector shift = TAVRIX_VECTOR(srai_epi16)(above, 15) & FillWords(2 * kShift);
    // The threshold less the least that it is without contrast.
    const Vector threshold = AddWords(above & ~isWeak, shift);
    const Vector least = SubtractWords(global, FillWords(kShift));
    return TAVRIX_VECTOR(cmpgt_epi16)(SubtractWords(LoadWords(values), least), threshold);
}
#endif

void SlideWindow(const Byte* entering, Byte* leaving, int width, const Columns& columns) {
#ifndef TAVRIX_PLAIN_KERNELS
    const Columns own = columns;  // which bytes that are stored cannot change
    const Vector factor = FillWords(Opaque(kSquareFactor));
    int x = 0;
    for (; x + kVectorWords <= width; x += kVectorWords) SlideStep(entering + x, leaving, own, x, factor);
    if (x == width) return;
    Byte last[kVectorWords];
    __builtin_memcpy(last, leaving + x, sizeof last);
    __builtin_memcpy(last, entering + x, static_cast<unsigned>(width - x));
    SlideStep(last, leaving, own, x, factor);
#else
    for (int x = 0; x < width; ++x) {
        const int in = entering[x], out = leaving[x];
        columns.sums[x] = static_cast<std::uint16_t>(columns.sums[x] + in - out);
        (x % 2 == 0 ? columns.evenSquares : columns.oddSquares)[x / 2] +=
            kSquareFactor * (in * in - out * out);
        leaving[x] = static_cast<Byte>(in);
    }
#endif
}

void ContrastRow(Byte* row, int width, const Columns& columns, int globalThreshold) {
#ifndef TAVRIX_PLAIN_KERNELS
    const Columns own = columns;
    const Vector global = FillWords(globalThreshold);
    int x = 0;
    for (; x + kVectorWords <= width; x += kVectorWords) {
        StoreMasks(row + x, Contrast(row + x, own, x, global));
    }
    if (x == width) return;
    Byte last[kVectorWords] = {};
    const auto rest = static_cast<unsigned>(width - x);
    __builtin_memcpy(last, row + x, rest);
    StoreMasks(last, Contrast(last, own, x, global));
    __builtin_memcpy(row + x, last, rest);
#else
    constexpr int kWindowPixels = 25;
    const auto squaresAt = [&](int x) {
        return x % 2 == 0 ? columns.evenSquares[x / 2] : columns.oddSquares[(x + 1) / 2 - 1];
    };
    for (int x = 0; x < width; ++x) {
        int sum = 0, spread = 0;
        for (int column = x - 2; column <= x + 2; ++column) {
            sum += columns.sums[column];
            spread += squaresAt(column);
        }
        const int mean = sum / kWindowPixels;
        const int base = spread - sum * sum >= 0 ? mean : globalThreshold;
        const int threshold = mean < globalThreshold ? base + kShift : base - kShift;
        row[x] = row[x] <= threshold ? 0 : 255;
    }
#endif
}

}  // namespace

const LocalContrastKernels LocalContrastKernels::TAVRIX_KERNEL_LEVEL{.slideWindow = SlideWindow,
                                                                     .contrastRow = ContrastRow};

}  // namespace tavrix
