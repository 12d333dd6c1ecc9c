// SPDX-License-Identifier: MIT
#include "binarize/LocalContrastKernels.h"

#include <immintrin.h>

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

constexpr int kWindowPixels = 25;
constexpr int kShift = 20;  // levels
// A deviation of 20 levels, as 25 Q - S^2 of the window's sum S and sum of squares Q: (20 * 25)^2.
constexpr int kContrastLimit = 250000;
// The mean S / 25 as S * 5243 >> 17, exact for every sum of 25 bytes.
constexpr short kMeanFactor = 5243;

// The same steps on 16 or on 8 pixels.
#ifdef __AVX2__
using Lanes = __m256i;
#define TAVRIX_LANES(operation) _mm256_##operation
inline Lanes Load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
inline Lanes Both(Lanes a, Lanes b) {
    return _mm256_and_si256(a, b);
}
inline Lanes Differing(Lanes a, Lanes b) {
    return _mm256_xor_si256(a, b);
}
inline Lanes Widen(const std::uint8_t* bytes) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}
inline void StoreNarrowed(Lanes words, std::uint8_t* bytes) {
    const __m128i narrow = _mm_packs_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), narrow);
}
// Exchanges halves so that a and b stand as unpacking words to low and high leaves them.
inline void OrderAsUnpacked(Lanes& a, Lanes& b) {
    const Lanes first = a;
    a = _mm256_permute2x128_si256(first, b, 0x20);
    b = _mm256_permute2x128_si256(first, b, 0x31);
}
#else
using Lanes = __m128i;
#define TAVRIX_LANES(operation) _mm_##operation
inline Lanes Load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline Lanes Both(Lanes a, Lanes b) {
    return _mm_and_si128(a, b);
}
inline Lanes Differing(Lanes a, Lanes b) {
    return _mm_xor_si128(a, b);
}
inline Lanes Widen(const std::uint8_t* bytes) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes)), _mm_setzero_si128());
}
inline void StoreNarrowed(Lanes words, std::uint8_t* bytes) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm_packs_epi16(words, words));
}
inline void OrderAsUnpacked(Lanes&, Lanes&) {}
#endif

constexpr int kStep = sizeof(Lanes) / sizeof(std::int16_t);  // pixels

inline Lanes SumOf5Words(const std::uint16_t* words) {
    const Lanes outer = TAVRIX_LANES(add_epi16)(Load(words), Load(words + 4));
    const Lanes inner = TAVRIX_LANES(add_epi16)(Load(words + 1), Load(words + 3));
    return TAVRIX_LANES(add_epi16)(TAVRIX_LANES(add_epi16)(outer, inner), Load(words + 2));
}

inline Lanes SumOf5Longs(const std::int32_t* longs) {
    const Lanes outer = TAVRIX_LANES(add_epi32)(Load(longs), Load(longs + 4));
    const Lanes inner = TAVRIX_LANES(add_epi32)(Load(longs + 1), Load(longs + 3));
    return TAVRIX_LANES(add_epi32)(TAVRIX_LANES(add_epi32)(outer, inner), Load(longs + 2));
}

// All bits of a lane where 25 Q - S^2 reaches the limit.
inline Lanes HasContrast(Lanes sum, Lanes square) {
    const Lanes times9 = TAVRIX_LANES(add_epi32)(square, TAVRIX_LANES(slli_epi32)(square, 3));
    const Lanes times25 = TAVRIX_LANES(add_epi32)(times9, TAVRIX_LANES(slli_epi32)(square, 4));
    const Lanes spread = TAVRIX_LANES(sub_epi32)(times25, TAVRIX_LANES(madd_epi16)(sum, sum));
    return TAVRIX_LANES(cmpgt_epi32)(spread, TAVRIX_LANES(set1_epi32)(kContrastLimit - 1));
}

// 255 or 0 a word, for the values of kStep pixels.
inline Lanes Contrast(Lanes values, const std::uint16_t* sums, const std::int32_t* squares, Lanes global) {
    const Lanes zero{};
    const Lanes sum = SumOf5Words(sums);
    Lanes low = SumOf5Longs(squares), high = SumOf5Longs(squares + kStep / 2);
    OrderAsUnpacked(low, high);
    const Lanes strong =
        TAVRIX_LANES(packs_epi32)(HasContrast(TAVRIX_LANES(unpacklo_epi16)(sum, zero), low),
                                  HasContrast(TAVRIX_LANES(unpackhi_epi16)(sum, zero), high));
    const Lanes mean =
        TAVRIX_LANES(srli_epi16)(TAVRIX_LANES(mulhi_epu16)(sum, TAVRIX_LANES(set1_epi16)(kMeanFactor)), 1);
    const Lanes base = Differing(global, Both(strong, Differing(global, mean)));
    const Lanes dark = TAVRIX_LANES(cmpgt_epi16)(global, mean);
    const Lanes shift = TAVRIX_LANES(sub_epi16)(Both(dark, TAVRIX_LANES(set1_epi16)(2 * kShift)),
                                                TAVRIX_LANES(set1_epi16)(kShift));
    return TAVRIX_LANES(cmpgt_epi16)(values, TAVRIX_LANES(add_epi16)(base, shift));
}

}  // namespace

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
    const int last = width - kStep;
    if (last >= 0) {
        const Lanes global = TAVRIX_LANES(set1_epi16)(static_cast<short>(globalThreshold));
        // The last step may overlap the one before it: it takes its values before they are overwritten.
        const Lanes lastValues = Widen(row + last);
        for (int x = 0; x < last; x += kStep) {
            StoreNarrowed(Contrast(Widen(row + x), sums + x, squares + x, global), row + x);
        }
        StoreNarrowed(Contrast(lastValues, sums + last, squares + last, global), row + last);
        return;
    }
    for (int x = 0; x < width; ++x) {
        const int sum = sums[x] + sums[x + 1] + sums[x + 2] + sums[x + 3] + sums[x + 4];
        const int square = squares[x] + squares[x + 1] + squares[x + 2] + squares[x + 3] + squares[x + 4];
        const int mean = sum / kWindowPixels;
        const int base = kWindowPixels * square - sum * sum >= kContrastLimit ? mean : globalThreshold;
        const int threshold = mean < globalThreshold ? base + kShift : base - kShift;
        row[x] = row[x] <= threshold ? 0 : 255;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
