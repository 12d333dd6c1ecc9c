// SPDX-License-Identifier: MIT
#include "image/PixelKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

Byte GrayInDouble(const Byte* pixel) {
    const double blue = pixel[0], green = pixel[1], red = pixel[2];
    return static_cast<Byte>(0.299 * red + 0.587 * green + 0.114 * blue + 0.5);
}

unsigned PackByte(const Byte* pixels, int count, Byte limit) {
    unsigned byte = 0;
    for (int i = 0; i < count; ++i) byte |= (pixels[i] > limit ? 0x80u : 0u) >> i;
    return byte;
}

#ifndef TAVRIX_PLAIN_KERNELS
// The vector code computes the rounded quotient of 299 R + 587 G + 114 B and 1000 in integers. It is what
// GrayInDouble gives except on ties, where the sum in double may come out just below; ties are done again
// by that. 16 bits are enough, since the sum is 8 s + r with
//   s = 37 R + 73 G + 14 B and r = 3 R + 3 G + 2 B.
constexpr short kHalf = 500;
// q = n / 125 as n * 33555 >> 22, exact up to n = 59,073.
constexpr short kQuotientFactor = static_cast<short>(33555);
constexpr int kQuotientShift = 22 - 16;
constexpr short kDivisor = 1000;

constexpr int kStep = kVectorBytes;  // pixels

#ifdef __AVX2__
struct Factors {
    __m256i divisor;
};

inline Factors MakeFactors() {
    return {_mm256_set1_epi16(Opaque(kDivisor))};
}

inline __m256i InBothLanes(__m128i lane) {
    return _mm256_broadcastsi128_si256(lane);
}

inline __m256i LoadLanes(const Byte* low, const Byte* high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(low)), Load16(high), 1);
}

// Gray of 16 pixels as words, and which of them are ties.
inline __m256i Gray16(const Byte* pixels, const Factors& factors, __m256i& ties) {
    // Each lane takes 4 pixels from the first 16 of its 24 bytes and 4 from the last 16.
    const __m256i first =
        _mm256_shuffle_epi8(LoadLanes(pixels, pixels + 24),
                            InBothLanes(_mm_setr_epi8(0, 1, 3, 4, 6, 7, 9, 10, 2, -1, 5, -1, 8, -1, 11, -1)));
    const __m256i last = _mm256_shuffle_epi8(
        LoadLanes(pixels + 8, pixels + 32),
        InBothLanes(_mm_setr_epi8(4, 5, 7, 8, 10, 11, 13, 14, 6, -1, 9, -1, 12, -1, 15, -1)));
    const __m256i blueGreen = _mm256_unpacklo_epi64(first, last);
    const __m256i red = _mm256_unpackhi_epi64(first, last);
    const __m256i sums = _mm256_add_epi16(_mm256_maddubs_epi16(blueGreen, _mm256_set1_epi16(73 << 8 | 14)),
                                          _mm256_maddubs_epi16(red, _mm256_set1_epi16(37)));
    const __m256i rests =
        _mm256_add_epi16(_mm256_add_epi16(_mm256_maddubs_epi16(blueGreen, _mm256_set1_epi16(3 << 8 | 2)),
                                          _mm256_set1_epi16(kHalf)),
                         _mm256_maddubs_epi16(red, _mm256_set1_epi16(3)));
    const __m256i eighths = _mm256_add_epi16(sums, _mm256_srli_epi16(rests, 3));
    const __m256i quotients =
        _mm256_srli_epi16(_mm256_mulhi_epu16(eighths, _mm256_set1_epi16(kQuotientFactor)), kQuotientShift);
    // A tie leaves no rest. The sum and 1000 q differ by less than 1000, so their low 16 bits tell.
    const __m256i whole = _mm256_add_epi16(_mm256_slli_epi16(sums, 3), rests);
    ties = _mm256_cmpeq_epi16(whole, _mm256_mullo_epi16(quotients, factors.divisor));
    return quotients;
}

// Gray of a step's pixels. Bit i of the result is set where pixel i is a tie.
inline std::uint32_t GrayStep(const Byte* pixels, const Factors& factors, Byte* gray) {
    __m256i lowTies, highTies;
    const __m256i low = Gray16(pixels, factors, lowTies), high = Gray16(pixels + 48, factors, highTies);
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8);
    Store(gray, bytes);
    const __m256i ties = _mm256_or_si256(lowTies, highTies);
    if (_mm256_testz_si256(ties, ties)) [[likely]]
        return 0;
    const __m256i masks = _mm256_permute4x64_epi64(_mm256_packs_epi16(lowTies, highTies), 0xD8);
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(masks));
}

// Each 8 bytes in reverse order.
inline Vector ReversedEights(Vector bytes) {
    return _mm256_shuffle_epi8(
        bytes, InBothLanes(_mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8)));
}
#else
// The same sum as 8 s + r with
//   s = 36 (R + 2 G) + 16 B and r = 11 (R + G) - 14 B,
// which takes fewer instructions where channels stand apart.
struct Factors {
    __m128i sums, rests, blueRests, divisor;
};

inline Factors MakeFactors() {
    return {_mm_set1_epi16(Opaque(36)), _mm_set1_epi16(Opaque(11)), _mm_set1_epi16(Opaque(14)),
            _mm_set1_epi16(Opaque(kDivisor))};
}

// A pixel and the byte after it. After the last one nothing may be read.
inline __m128i LoadPixel(const Byte* pixel) {
    std::int32_t bytes;
    __builtin_memcpy(&bytes, pixel, sizeof bytes);
    return _mm_cvtsi32_si128(bytes);
}
inline __m128i LoadLastPixel(const Byte* pixel) {
    return _mm_srli_epi32(LoadPixel(pixel - 1), 8);
}

// Gray of 8 pixels, the last one given, as words, and which of them are ties.
inline __m128i Gray8(const Byte* pixels, __m128i last, const Factors& factors, __m128i& ties) {
    // Words of blue and green, and of red and a byte that does not matter, brought together.
    const auto pair = [](__m128i a, __m128i b) { return _mm_unpacklo_epi16(a, b); };
    const auto at = [pixels](int i) { return LoadPixel(pixels + 3 * i); };
    const __m128i low = _mm_unpacklo_epi32(pair(at(0), at(1)), pair(at(2), at(3)));
    const __m128i high = _mm_unpacklo_epi32(pair(at(4), at(5)), pair(at(6), last));
    const __m128i blueGreen = _mm_unpacklo_epi64(low, high);
    const __m128i red = _mm_unpackhi_epi64(low, high) & _mm_set1_epi16(255);
    const __m128i blue = blueGreen & _mm_set1_epi16(255), green = _mm_srli_epi16(blueGreen, 8);

    const __m128i redGreen = _mm_add_epi16(red, green);
    const __m128i sums =
        _mm_add_epi16(_mm_mullo_epi16(_mm_add_epi16(redGreen, green), factors.sums), _mm_slli_epi16(blue, 4));
    const __m128i rests =
        _mm_sub_epi16(_mm_add_epi16(_mm_mullo_epi16(redGreen, factors.rests), _mm_set1_epi16(kHalf)),
                      _mm_mullo_epi16(blue, factors.blueRests));
    const __m128i eighths = _mm_add_epi16(sums, _mm_srai_epi16(rests, 3));
    const __m128i quotients =
        _mm_srli_epi16(_mm_mulhi_epu16(eighths, _mm_set1_epi16(kQuotientFactor)), kQuotientShift);
    // A tie leaves no rest. The sum and 1000 q differ by less than 1000, so their low 16 bits tell.
    const __m128i whole = _mm_add_epi16(_mm_slli_epi16(sums, 3), rests);
    ties = _mm_cmpeq_epi16(whole, _mm_mullo_epi16(quotients, factors.divisor));
    return quotients;
}

// Gray of a step's pixels. Bit i of the result is set where pixel i is a tie.
inline std::uint32_t GrayStep(const Byte* pixels, const Factors& factors, Byte* gray) {
    __m128i lowTies, highTies;
    const __m128i low = Gray8(pixels, LoadPixel(pixels + 21), factors, lowTies);
    const __m128i high = Gray8(pixels + 24, LoadLastPixel(pixels + 45), factors, highTies);
    Store(gray, _mm_packus_epi16(low, high));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(lowTies, highTies)));
}

inline Vector ReversedEights(Vector bytes) {  // the bytes of words, then the words
    const __m128i swapped = _mm_or_si128(_mm_slli_epi16(bytes, 8), _mm_srli_epi16(bytes, 8));
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(swapped, 0x1B), 0x1B);
}
#endif

inline void PackStep(const Byte* row, Byte limit, Byte* packed) {
    const Vector limits = Fill(limit);
    const Vector black = Equal(Max(Load(row), limits), limits);
    const int white = ~TAVRIX_VECTOR(movemask_epi8)(ReversedEights(black));
    __builtin_memcpy(packed, &white, kStep / 8);
}
#endif

void GrayRow(const Byte* row, int width, Byte* gray) {
#ifndef TAVRIX_PLAIN_KERNELS
    const int last = width - kStep;
    if (last >= 0) {
        const Factors factors = MakeFactors();
        constexpr int kAhead = 3072;  // bytes
        const auto step = [&](int x) {
            for (int i = 0; i < 3 * kStep; i += 48) Prefetch(row + 3 * x + i, kAhead);
            std::uint32_t ties = GrayStep(row + 3 * x, factors, gray + x);
            for (; ties != 0; ties &= ties - 1) [[unlikely]] {
                    const int i = x + __builtin_ctz(ties);
                    gray[i] = GrayInDouble(row + 3 * i);
                }
        };
        for (int x = 0; x < last; x += kStep) step(x);
        step(last);  // may overlap the one before it
        return;
    }
#endif
    for (int x = 0; x < width; ++x) gray[x] = GrayInDouble(row + 3 * x);
}

void PackAbove(const Byte* row, int width, Byte limit, Byte* packed) {
    int x = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    for (; x + kStep <= width; x += kStep) PackStep(row + x, limit, packed + x / 8);
#endif
    for (; x < width; x += 8) {
        const int count = width - x < 8 ? width - x : 8;
        packed[x / 8] = static_cast<Byte>(PackByte(row + x, count, limit));
    }
}

}  // namespace

const PixelKernels PixelKernels::TAVRIX_KERNEL_LEVEL{.packAbove = PackAbove, .grayRow = GrayRow};

}  // namespace tavrix
