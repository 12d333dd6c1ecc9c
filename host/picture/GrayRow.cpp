// SPDX-License-Identifier: MIT
#include "picture/GrayRow.h"

#include <algorithm>
#include <bit>

#include "picture/EveryProcessor.h"
#include "picture/GrayLevel.h"

#ifdef HOST_HAS_AVX2_VARIANTS
#include <immintrin.h>
#endif

namespace host {
namespace {

std::uint8_t GrayAt(const std::uint8_t* pixel) {
    return GrayOf(pixel[2], pixel[1], pixel[0]);
}

// A run's levels in whole numbers. Bits of the result are set where a pixel lies in the middle of two levels:
// there binary fractions of the weights decide.
constexpr int kRun = 32;  // pixels

inline std::uint32_t ToGrayRun(const std::uint8_t* from, std::uint8_t* to) {
    unsigned isAnyMiddle = 0;
    for (int x = 0; x < kRun; ++x) {
        const unsigned thousandths = Thousandths(from[3 * x + 2], from[3 * x + 1], from[3 * x]);
        const unsigned level = LevelOf(thousandths);
        to[x] = static_cast<std::uint8_t>(level);
        isAnyMiddle |= IsMiddle(level, thousandths);
    }
    return isAnyMiddle != 0 ? ~std::uint32_t{0} : 0;  // which of them costs more than to do all again
}

// Run: of ToGrayRun's kind.
template <typename Run>
[[gnu::always_inline]] inline void ConvertRow(const std::uint8_t* from, int width, std::uint8_t* to,
                                              const Run& run) {
    if (width < kRun) {
        for (int x = 0; x < width; ++x) to[x] = GrayAt(from + 3 * x);
        return;
    }
    for (int x = 0; x < width; x += kRun) {
        const int start = std::min(x, width - kRun);  // the last may overlap the one before it
        for (std::uint32_t middles = run(from + 3 * start, to + start); middles != 0;
             middles &= middles - 1) {
            const int i = start + std::countr_zero(middles);
            to[i] = GrayAt(from + 3 * i);
        }
    }
}

#ifdef HOST_HAS_AVX2_VARIANTS
#pragma GCC push_options
#pragma GCC target("avx2")

// Four pixels in each half: blue and green of all, then red and a zero.
inline __m256i Eight(const std::uint8_t* from) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i last =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));  // its first 4 are not used
    const __m256i places = _mm256_setr_epi8(0, 1, 3, 4, 6, 7, 9, 10, 2, -1, 5, -1, 8, -1, 11, -1,  //
                                            4, 5, 7, 8, 10, 11, 13, 14, 6, -1, 9, -1, 12, -1, 15, -1);
    return _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(first), last, 1), places);
}

// Pixels 0 to 3, 8 to 11, 4 to 7 and 12 to 15 as words. What Thousandths gives is 8 s + r, so that 16 bits
// are enough: s weighs with eighths of the weights, r with what they leave over.
inline __m256i Sixteen(const std::uint8_t* from, __m256i& middles) {
    const __m256i first = Eight(from), second = Eight(from + 24);
    const __m256i blueGreen = _mm256_unpacklo_epi64(first, second);
    const __m256i red = _mm256_unpackhi_epi64(first, second);
    const auto weighed = [&](int blue, int green, int ofRed) {
        const auto pair = static_cast<short>(green << 8 | blue), single = static_cast<short>(ofRed);
        return _mm256_add_epi16(_mm256_maddubs_epi16(blueGreen, _mm256_set1_epi16(pair)),
                                _mm256_maddubs_epi16(red, _mm256_set1_epi16(single)));
    };
    const __m256i eighths = weighed(14, 73, 37);
    const __m256i rests = _mm256_add_epi16(weighed(2, 3, 3), _mm256_set1_epi16(500));
    const __m256i sums = _mm256_add_epi16(eighths, _mm256_srli_epi16(rests, 3));
    const __m256i levels =
        _mm256_srli_epi16(_mm256_mulhi_epu16(sums, _mm256_set1_epi16(static_cast<short>(33555))), 6);
    // They differ by less than 1000, so that the low 16 bits tell.
    middles = _mm256_cmpeq_epi16(_mm256_add_epi16(_mm256_slli_epi16(eighths, 3), rests),
                                 _mm256_mullo_epi16(levels, _mm256_set1_epi16(1000)));
    return levels;
}

inline std::uint32_t ToGrayRunAvx2(const std::uint8_t* from, std::uint8_t* to) {
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    __m256i lowMiddles, highMiddles;
    const __m256i low = Sixteen(from, lowMiddles), high = Sixteen(from + 48, highMiddles);
    const __m256i levels = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), order);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), levels);
    const __m256i middles = _mm256_permutevar8x32_epi32(_mm256_packs_epi16(lowMiddles, highMiddles), order);
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(middles));
}

void ToGrayRowAvx2(const std::uint8_t* from, int width, std::uint8_t* to) {
    ConvertRow(from, width, to, ToGrayRunAvx2);
}

#pragma GCC pop_options
#endif

}  // namespace

void ToGrayRow(const std::uint8_t* from, int width, std::uint8_t* to) {
#ifdef HOST_HAS_AVX2_VARIANTS
    if (__builtin_cpu_supports("avx2")) return ToGrayRowAvx2(from, width, to);
#endif
    ConvertRow(from, width, to, ToGrayRun);
}

}  // namespace host
