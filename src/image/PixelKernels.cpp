// SPDX-License-Identifier: MIT
#include "image/PixelKernels.h"

#include <immintrin.h>

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

std::uint8_t Gray(const std::uint8_t* pixel) {
    const double blue = pixel[0], green = pixel[1], red = pixel[2];
    return static_cast<std::uint8_t>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
}

// The vector code computes the rounded quotient of 299 R + 587 G + 114 B and 1000 in integers. It is the
// same as the rule in double except on ties, where the double sum may come out just below; those pixels
// are done again by the rule. Sums are held as 8 * s + r, so that 16 bits are enough:
//   s = 37 R + 73 G + 14 B, r = 3 R + 3 G + 2 B.
constexpr short kHalf = 500;
// q = n / 125 as n * 33555 >> 22, exact up to n = 59,073.
constexpr short kQuotientFactor = static_cast<short>(33555);
constexpr int kQuotientShift = 22 - 16;
constexpr short kEighth = 125;

#ifdef __AVX2__
constexpr int kGrayStep = 16;  // pixels

// Blue and green bytes of 8 pixels a lane, then red bytes beside zeros, from the lane's first and last 16
// of 24 bytes.
inline __m256i PickBlueGreen(__m256i first, __m256i last) {
    const __m256i pickFirst =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 3, 4, 6, 7, 9, 10, 12, 13, 15, -1, -1, -1, -1, -1));
    const __m256i pickLast = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 8, 10, 11, 13, 14));
    return _mm256_or_si256(_mm256_shuffle_epi8(first, pickFirst), _mm256_shuffle_epi8(last, pickLast));
}

inline __m256i PickRed(__m256i first, __m256i last) {
    const __m256i pickFirst = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, -1, 5, -1, 8, -1, 11, -1, 14, -1, -1, -1, -1, -1, -1, -1));
    const __m256i pickLast = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 9, -1, 12, -1, 15, -1));
    return _mm256_or_si256(_mm256_shuffle_epi8(first, pickFirst), _mm256_shuffle_epi8(last, pickLast));
}

inline __m256i LoadLanes(const std::uint8_t* low, const std::uint8_t* high) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

// Gray of 16 pixels; true when one of them is a tie.
inline bool GrayStep(const std::uint8_t* pixels, std::uint8_t* gray) {
    const __m256i first = LoadLanes(pixels, pixels + 24);
    const __m256i last = LoadLanes(pixels + 8, pixels + 32);
    const __m256i blueGreen = PickBlueGreen(first, last), red = PickRed(first, last);
    const __m256i sums = _mm256_add_epi16(_mm256_maddubs_epi16(blueGreen, _mm256_set1_epi16(73 << 8 | 14)),
                                          _mm256_maddubs_epi16(red, _mm256_set1_epi16(37)));
    const __m256i rests =
        _mm256_add_epi16(_mm256_add_epi16(_mm256_maddubs_epi16(blueGreen, _mm256_set1_epi16(3 << 8 | 2)),
                                          _mm256_maddubs_epi16(red, _mm256_set1_epi16(3))),
                         _mm256_set1_epi16(kHalf));
    const __m256i eighths = _mm256_add_epi16(sums, _mm256_srli_epi16(rests, 3));
    const __m256i quotients =
        _mm256_srli_epi16(_mm256_mulhi_epu16(eighths, _mm256_set1_epi16(kQuotientFactor)), kQuotientShift);
    // A tie leaves nothing: eighths = 125 q and no rest below 8.
    const __m256i remainder =
        _mm256_or_si256(_mm256_sub_epi16(eighths, _mm256_mullo_epi16(quotients, _mm256_set1_epi16(kEighth))),
                        _mm256_and_si256(rests, _mm256_set1_epi16(7)));
    const __m256i ties = _mm256_cmpeq_epi16(remainder, _mm256_setzero_si256());
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(gray),
        _mm_packus_epi16(_mm256_castsi256_si128(quotients), _mm256_extracti128_si256(quotients, 1)));
    return _mm256_movemask_epi8(ties) != 0;
}
#else
constexpr int kGrayStep = 8;   // pixels
#endif

}  // namespace

void GrayRow(const std::uint8_t* row, int width, std::uint8_t* gray) {
    int x = 0;
#ifdef __AVX2__
    if (width >= kGrayStep) {
        for (;;) {
            if (GrayStep(row + 3 * x, gray + x)) [[unlikely]] {
                for (int i = x; i < x + kGrayStep; ++i) gray[i] = Gray(row + 3 * i);
            }
            if (x == width - kGrayStep) return;
            x = x + kGrayStep < width - kGrayStep ? x + kGrayStep : width - kGrayStep;
        }
    }
#endif
    for (; x < width; ++x) gray[x] = Gray(row + 3 * x);
}

#ifdef __AVX2__
constexpr int kPackStep = 32;  // pixels

inline std::uint32_t PackStep(__m256i values, __m256i limit) {
    const __m256i reverse8 =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
    const __m256i black = _mm256_cmpeq_epi8(_mm256_max_epu8(values, limit), limit);
    return ~static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_shuffle_epi8(black, reverse8)));
}
#else
constexpr int kPackStep = 16;  // pixels
#endif

void PackAbove(const std::uint8_t* row, int width, std::uint8_t limit, std::uint8_t* packed) {
    int x = 0;
#ifdef __AVX2__
    const __m256i limits = _mm256_set1_epi8(static_cast<char>(limit));
    for (; x + kPackStep <= width; x += kPackStep) {
        const std::uint32_t bits =
            PackStep(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(row + x)), limits);
        __builtin_memcpy(packed + x / 8, &bits, sizeof bits);
    }
#endif
    for (; x < width; x += 8) {
        const int count = width - x < 8 ? width - x : 8;
        unsigned byte = 0;
        for (int i = 0; i < count; ++i) byte |= (row[x + i] > limit ? 0x80u : 0u) >> i;
        packed[x / 8] = static_cast<std::uint8_t>(byte);
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
