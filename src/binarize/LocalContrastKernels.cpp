// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

constexpr int kWindowPixels = 25;
constexpr int kShift = 20;  // levels
// A deviation of 20 levels, as 25 Q - S^2 of the window's sum S and sum of squares Q: (20 * 25)^2.
constexpr int kContrastLimit = 250000;
#ifndef TAVRIX_PLAIN_KERNELS
// The mean S / 25 as S * 5243 >> 17, exact for every sum of 25 bytes.
constexpr short kMeanFactor = 5243;

// Exchanges halves so that a and b stand as unpacking words to low and high leaves them.
inline void OrderAsUnpacked([[maybe_unused]] Vector& a, [[maybe_unused]] Vector& b) {
#ifdef __AVX2__
    const Vector first = a;
    a = _mm256_permute2x128_si256(first, b, 0x20);
    b = _mm256_permute2x128_si256(first, b, 0x31);
#endif
}

inline Vector SumOf5Words(const std::uint16_t* words) {
    const Vector outer = AddWords(Load(words), Load(words + 4));
    const Vector inner = AddWords(Load(words + 1), Load(words + 3));
    return AddWords(AddWords(outer, inner), Load(words + 2));
}

inline Vector SumOf5Longs(const std::int32_t* longs) {
    const Vector outer = TAVRIX_VECTOR(add_epi32)(Load(longs), Load(longs + 4));
    const Vector inner = TAVRIX_VECTOR(add_epi32)(Load(longs + 1), Load(longs + 3));
    return TAVRIX_VECTOR(add_epi32)(TAVRIX_VECTOR(add_epi32)(outer, inner), Load(longs + 2));
}

// All bits of a lane where 25 Q - S^2 reaches the limit.
inline Vector HasContrast(Vector sum, Vector square) {
    const Vector times9 = TAVRIX_VECTOR(add_epi32)(square, TAVRIX_VECTOR(slli_epi32)(square, 3));
    const Vector times25 = TAVRIX_VECTOR(add_epi32)(times9, TAVRIX_VECTOR(slli_epi32)(square, 4));
    const Vector spread = TAVRIX_VECTOR(sub_epi32)(times25, TAVRIX_VECTOR(madd_epi16)(sum, sum));
    return TAVRIX_VECTOR(cmpgt_epi32)(spread, TAVRIX_VECTOR(set1_epi32)(kContrastLimit - 1));
}

// 255 or 0 a word, for the values of kVectorWords pixels.
inline Vector Contrast(Vector values, const std::uint16_t* sums, const std::int32_t* squares, Vector global) {
    const Vector zero{};
    const Vector sum = SumOf5Words(sums);
    Vector low = SumOf5Longs(squares), high = SumOf5Longs(squares + kVectorWords / 2);
    OrderAsUnpacked(low, high);
    const Vector strong =
        TAVRIX_VECTOR(packs_epi32)(HasContrast(TAVRIX_VECTOR(unpacklo_epi16)(sum, zero), low),
                                   HasContrast(TAVRIX_VECTOR(unpackhi_epi16)(sum, zero), high));
    const Vector mean = TAVRIX_VECTOR(srli_epi16)(TAVRIX_VECTOR(mulhi_epu16)(sum, FillWords(kMeanFactor)), 1);
    const Vector base = global ^ (strong & (global ^ mean));
    const Vector dark = TAVRIX_VECTOR(cmpgt_epi16)(global, mean);
    const Vector shift = SubtractWords(dark & FillWords(2 * kShift), FillWords(kShift));
    return TAVRIX_VECTOR(cmpgt_epi16)(values, AddWords(base, shift));
}
#endif

void SlideWindow(const std::uint8_t* entering, std::uint8_t* leaving, int width, std::uint16_t* sums,
                 std::int32_t* squares) {
    for (int x = 0; x < width; ++x) {
        const int in = entering[x], out = leaving[x];
        sums[x] = static_cast<std::uint16_t>(sums[x] + in - out);
        squares[x] += in * in - out * out;
        leaving[x] = static_cast<std::uint8_t>(in);
    }
}

void ContrastRow(std::uint8_t* row, int width, const std::uint16_t* sums, const std::int32_t* squares,
                 int globalThreshold) {
#ifndef TAVRIX_PLAIN_KERNELS
    const int last = width - kVectorWords;
    if (last >= 0) {
        const Vector global = FillWords(globalThreshold);
        // The last step may overlap the one before it: it takes its values before they are overwritten.
        const Vector lastValues = LoadWords(row + last);
        for (int x = 0; x < last; x += kVectorWords) {
            StoreMasks(row + x, Contrast(LoadWords(row + x), sums + x, squares + x, global));
        }
        StoreMasks(row + last, Contrast(lastValues, sums + last, squares + last, global));
        return;
    }
#endif
    for (int x = 0; x < width; ++x) {
        const int sum = sums[x] + sums[x + 1] + sums[x + 2] + sums[x + 3] + sums[x + 4];
        const int square = squares[x] + squares[x + 1] + squares[x + 2] + squares[x + 3] + squares[x + 4];
        const int mean = sum / kWindowPixels;
        const int base = kWindowPixels * square - sum * sum >= kContrastLimit ? mean : globalThreshold;
        const int threshold = mean < globalThreshold ? base + kShift : base - kShift;
        row[x] = row[x] <= threshold ? 0 : 255;
    }
}

}  // namespace

const LocalContrastKernels LocalContrastKernels::TAVRIX_KERNEL_LEVEL{.slideWindow = SlideWindow,
                                                                     .contrastRow = ContrastRow};

}  // namespace tavrix
