// SPDX-License-Identifier: MIT
#include "regions/PageKernels.h"

#include <emmintrin.h>
#ifdef __AVX2__
#include <immintrin.h>
#endif

namespace tavrix::TAVRIX_KERNEL_TARGET {
namespace {

using Byte = std::uint8_t;

// Vectors of this level: bytes, and half as many signed 16-bit words.
#ifdef __AVX2__
using Vector = __m256i;
constexpr int kBytes = 32, kWords = 16;
Vector Load(const Byte* from) {
    return _mm256_loadu_si256(reinterpret_cast<const Vector*>(from));
}
void Store(Byte* to, Vector v) {
    _mm256_storeu_si256(reinterpret_cast<Vector*>(to), v);
}
Vector LoadWords(const Byte* from) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}
void StoreWords(Byte* to, Vector words) {  // limited to 0..255
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(bytes));
}
Vector Fill(int byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}
Vector And(Vector a, Vector b) {
    return _mm256_and_si256(a, b);
}
Vector AndNot(Vector a, Vector b) {
    return _mm256_andnot_si256(a, b);
}
Vector Equal(Vector a, Vector b) {
    return _mm256_cmpeq_epi8(a, b);
}
Vector Min(Vector a, Vector b) {
    return _mm256_min_epu8(a, b);
}
Vector Max(Vector a, Vector b) {
    return _mm256_max_epu8(a, b);
}
Vector Subtract(Vector a, Vector b) {
    return _mm256_sub_epi8(a, b);
}
Vector AddWords(Vector a, Vector b) {
    return _mm256_add_epi16(a, b);
}
Vector SubtractWords(Vector a, Vector b) {
    return _mm256_sub_epi16(a, b);
}
int SumOf(Vector bytes) {
    const __m256i sums = _mm256_sad_epu8(bytes, _mm256_setzero_si256());
    const __m128i halves = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    return _mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4);
}
// The truncated root of a*a + b*b. Single precision is exact here: the sums are below 2^21, and a root
// just below a whole number stays further below it than half of the last place.
Vector RootOfSquares(Vector a, Vector b) {
    const auto root = [](__m256i pairs) {
        return _mm256_cvttps_epi32(_mm256_sqrt_ps(_mm256_cvtepi32_ps(_mm256_madd_epi16(pairs, pairs))));
    };
    return _mm256_packs_epi32(root(_mm256_unpacklo_epi16(a, b)), root(_mm256_unpackhi_epi16(a, b)));
}
// Words times a factor in single precision, truncated.
Vector TimesFactor(Vector words, float factor) {
    const auto product = [factor](__m256i v) {
        return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(v), _mm256_set1_ps(factor)));
    };
    const __m256i zero = _mm256_setzero_si256();
    return _mm256_packs_epi32(product(_mm256_unpacklo_epi16(words, zero)),
                              product(_mm256_unpackhi_epi16(words, zero)));
}
#else
using Vector = __m128i;
constexpr int kBytes = 16, kWords = 8;
Vector Load(const Byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const Vector*>(from));
}
void Store(Byte* to, Vector v) {
    _mm_storeu_si128(reinterpret_cast<Vector*>(to), v);
}
Vector LoadWords(const Byte* from) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const Vector*>(from)), _mm_setzero_si128());
}
void StoreWords(Byte* to, Vector words) {  // limited to 0..255
    _mm_storel_epi64(reinterpret_cast<Vector*>(to), _mm_packus_epi16(words, words));
}
Vector Fill(int byte) {
    return _mm_set1_epi8(static_cast<char>(byte));
}
Vector And(Vector a, Vector b) {
    return _mm_and_si128(a, b);
}
Vector AndNot(Vector a, Vector b) {
    return _mm_andnot_si128(a, b);
}
Vector Equal(Vector a, Vector b) {
    return _mm_cmpeq_epi8(a, b);
}
Vector Min(Vector a, Vector b) {
    return _mm_min_epu8(a, b);
}
Vector Max(Vector a, Vector b) {
    return _mm_max_epu8(a, b);
}
Vector Subtract(Vector a, Vector b) {
    return _mm_sub_epi8(a, b);
}
Vector AddWords(Vector a, Vector b) {
    return _mm_add_epi16(a, b);
}
Vector SubtractWords(Vector a, Vector b) {
    return _mm_sub_epi16(a, b);
}
int SumOf(Vector bytes) {
    const __m128i sums = _mm_sad_epu8(bytes, _mm_setzero_si128());
    return _mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4);
}
Vector RootOfSquares(Vector a, Vector b) {  // as above
    const auto root = [](__m128i pairs) {
        return _mm_cvttps_epi32(_mm_sqrt_ps(_mm_cvtepi32_ps(_mm_madd_epi16(pairs, pairs))));
    };
    return _mm_packs_epi32(root(_mm_unpacklo_epi16(a, b)), root(_mm_unpackhi_epi16(a, b)));
}
Vector TimesFactor(Vector words, float factor) {
    const auto product = [factor](__m128i v) {
        return _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(v), _mm_set1_ps(factor)));
    };
    const __m128i zero = _mm_setzero_si128();
    return _mm_packs_epi32(product(_mm_unpacklo_epi16(words, zero)),
                           product(_mm_unpackhi_epi16(words, zero)));
}
#endif

// Counts lanes of masks (255 counts one). Byte counters go into the total before they can overflow.
class LaneCounter {
  public:
    void Add(Vector mask) {
        counters = Subtract(counters, mask);
        if (++adds == 255) Flush();
    }
    int Total() {
        Flush();
        return total;
    }

  private:
    void Flush() {
        total += SumOf(counters);
        counters = Fill(0);
        adds = 0;
    }
    Vector counters = Fill(0);
    int adds = 0, total = 0;
};

// The root of a sum of squares below 2^21, truncated and limited to 255.
int RootAt(int square) {
    const __m128 root = _mm_sqrt_ss(_mm_cvtsi32_ss(_mm_setzero_ps(), square));
    const int magnitude = _mm_cvttss_si32(root);
    return magnitude < 255 ? magnitude : 255;
}

}  // namespace

void SobelRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
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
    if (count >= kWords) {
        for (int x = 0; x + kWords <= count; x += kWords) at(x);
        at(count - kWords);
        return;
    }
    for (int x = 0; x < count; ++x) {
        const int diagonal = after[x + 1] - before[x - 1], antidiagonal = before[x + 1] - after[x - 1];
        const int gx = diagonal + antidiagonal + 2 * (row[x + 1] - row[x - 1]);
        const int gy = diagonal - antidiagonal + 2 * (after[x] - before[x]);
        target[x] = static_cast<Byte>(RootAt(gx * gx + gy * gy));
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
    const auto at = [=](int x) {
        const auto word = [x](const Byte* from, int dx) { return LoadWords(from + x + dx); };
        const auto three = [=](const Byte* from) {
            return AddWords(AddWords(word(from, -1), word(from, 1)), word(from, 0));
        };
        const Vector around =
            AddWords(AddWords(three(before), three(after)), AddWords(word(row, -1), word(row, 1)));
        StoreWords(target + x, SubtractWords(TimesFactor(word(row, 0), factor), around));
    };
    if (count >= kWords) {
        for (int x = 0; x + kWords <= count; x += kWords) at(x);
        at(count - kWords);
        return;
    }
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x + 1] + after[x - 1] +
                        after[x] + after[x + 1];
        const int value = static_cast<int>(factor * static_cast<float>(row[x])) - sum;
        target[x] = static_cast<Byte>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
}

int CountFrom(const Byte* row, int count, int threshold) {
    LaneCounter counter;
    const Vector limit = Fill(threshold);
    int x = 0;
    for (; x + kBytes <= count; x += kBytes) {
        const Vector bytes = Load(row + x);
        counter.Add(Equal(Max(bytes, limit), bytes));
    }
    int from = counter.Total();
    for (; x < count; ++x) from += row[x] >= threshold;
    return from;
}

void MaskUpTo(const Byte* row, int count, int limit, Byte* target) {
    const auto top = static_cast<Byte>(limit);
    const Byte upTo = limit < 0 ? 0 : 255;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) target[x] = row[x] <= top ? upTo : 0;
}

void MaskAbove(const Byte* row, int count, int limit, Byte* target) {
    const auto top = static_cast<Byte>(limit);
    const Byte upTo = limit < 0 ? 255 : 0;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) target[x] = row[x] > top ? 255 : upTo;
}

int CountTips(const Byte* row, const Byte* after, int count) {
    LaneCounter counter;
    const Vector zero = Fill(0);
    int x = 0;
    for (; x + kBytes <= count; x += kBytes) {
        const Vector around =
            Min(Min(Load(row + x + 1), Load(after + x - 1)), Min(Load(after + x), Load(after + x + 1)));
        counter.Add(AndNot(Equal(around, zero), Equal(Load(row + x), zero)));
    }
    int tips = counter.Total();
    for (; x < count; ++x) {
        tips += row[x] == 0 && row[x + 1] != 0 && after[x - 1] != 0 && after[x] != 0 && after[x + 1] != 0;
    }
    return tips;
}

void ThresholdRegionRow(const Byte* row, int count, int threshold, bool force, Byte* target,
                        std::int64_t* dark, std::int64_t* light) {
    const Byte forced = force ? 255 : 0;
    int darkCount = 0, lightCount = 0, x = 0;
    if (threshold >= 1 && threshold <= 255) {
        LaneCounter darkLanes, lightLanes;
        const Vector limit = Fill(threshold), zero = Fill(0), keep = Fill(255 - forced);
        for (; x + kBytes <= count; x += kBytes) {
            const Vector bytes = Load(row + x);
            const Vector bright = Equal(Max(bytes, limit), bytes);
            const Vector black = And(Equal(Load(target + x), zero), keep);
            const Vector white = AndNot(black, bright);
            Store(target + x, white);
            darkLanes.Add(Equal(bright, zero));
            lightLanes.Add(white);
        }
        darkCount = darkLanes.Total();
        lightCount = lightLanes.Total();
    }
    for (; x < count; ++x) {
        const bool isDark = row[x] < threshold;
        const bool isLight = !isDark && (target[x] | forced) != 0;
        target[x] = isLight ? 255 : 0;
        darkCount += isDark;
        lightCount += isLight;
    }
    *dark += darkCount;
    *light += lightCount;
}

void MergeRow(Byte* target, const Byte* other, int count) {
    for (int x = 0; x < count; ++x) target[x] = (target[x] | other[x]) == 0 ? 0 : 255;
}

void EvenZeroBits(const Byte* row, int count, std::uint64_t* words) {
    constexpr int kWordBits = 64, kStep = 16;
    for (int i = 0; i <= count / kWordBits + 1; ++i) words[i] = 0;
    const __m128i low = _mm_set1_epi16(255), zero = _mm_setzero_si128();
    const auto evens = [=](int x) {
        return _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row + 2 * x)), low);
    };
    int x = 0;
    for (; x + kStep <= count; x += kStep) {
        const __m128i bytes = _mm_packus_epi16(evens(x), evens(x + kStep / 2));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, zero)));
        words[x / kWordBits] |= std::uint64_t{bits} << x % kWordBits;
    }
    for (; x < count; ++x) words[x / kWordBits] |= std::uint64_t{row[2 * x] == 0} << x % kWordBits;
}

void ApplyEdgesRow(Byte* target, const Byte* mask, int count) {
    for (int x = 0; x < count; ++x) target[x] = target[x] == 1 || mask[x] == 0 ? 1 : 254;
}

void MarkRow(Byte* row, int count) {
    for (int x = 0; x < count; ++x) {
        const Byte value = row[x];
        row[x] = value == 0 ? Byte{1} : value == 255 ? Byte{254} : value;
    }
}

void FillAndMarkRow(const Byte* before, Byte* row, const Byte* after, int count, bool blackAfter) {
    constexpr int kStep = 64, kLane = 16;
    const auto isBlack = [](Byte value) { return value <= 1; };
    std::uint64_t left = isBlack(row[-1]) ? 1 : 0;
    int x = 0;
    for (; x + kStep < count; x += kStep) {
        const auto bits = [x](const Byte* from, auto test) {
            std::uint64_t result = 0;
            for (int i = 0; i < kStep; i += kLane) {
                const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + x + i));
                result |= std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(test(bytes)))} << i;
            }
            return result;
        };
        const auto ifBlack = [](__m128i v) { return _mm_cmpeq_epi8(_mm_min_epu8(v, _mm_set1_epi8(1)), v); };
        const auto ifWhite = [](__m128i v) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(-1)); };
        const std::uint64_t above = bits(before, ifBlack), below = bits(after, ifBlack);
        const std::uint64_t here = bits(row, ifBlack), gaps = bits(row, ifWhite);
        const std::uint64_t right = here >> 1 | std::uint64_t{isBlack(row[x + kStep])} << (kStep - 1);
        const std::uint64_t both = gaps & above & below;
        // A gap whose other neighbours are black, or that is filled once its left neighbour is black: so
        // black runs on to the right as a carry does in a sum.
        const std::uint64_t sure = here | (both & right);
        const std::uint64_t perhaps = sure | both | (gaps & right & (above | below));
        const std::uint64_t carries = (perhaps + sure + left) ^ perhaps ^ sure;
        const std::uint64_t filled = sure | (perhaps & carries);
        left = filled >> (kStep - 1);

        const __m128i bitOfLane = _mm_set_epi8(-128, 64, 32, 16, 8, 4, 2, 1, -128, 64, 32, 16, 8, 4, 2, 1);
        for (int i = 0; i < kStep; i += kLane) {
            auto* lanes = reinterpret_cast<__m128i*>(row + x + i);
            const __m128i pairs = _mm_set1_epi16(static_cast<short>(filled >> i));
            const __m128i spread =
                _mm_shufflehi_epi16(_mm_shufflelo_epi16(_mm_unpacklo_epi8(pairs, pairs), 0x00), 0x55);
            const __m128i isFilled = _mm_cmpeq_epi8(_mm_and_si128(spread, bitOfLane), bitOfLane);
            const __m128i old = _mm_loadu_si128(lanes);
            const __m128i isWhite = _mm_cmpeq_epi8(old, _mm_set1_epi8(-1));
            const __m128i isZero = _mm_cmpeq_epi8(old, _mm_setzero_si128());
            // 255 + 2 is 1, 255 - 1 is 254, 0 + 1 is 1.
            const __m128i change =
                _mm_or_si128(_mm_and_si128(isFilled, _mm_set1_epi8(2)), _mm_andnot_si128(isFilled, isWhite));
            const __m128i marked = _mm_add_epi8(old, _mm_and_si128(isWhite, change));
            _mm_storeu_si128(lanes, _mm_sub_epi8(marked, isZero));
        }
    }
    for (; x < count; ++x) {
        const bool right = x + 1 < count || !blackAfter ? isBlack(row[x + 1]) : true;
        const int around = isBlack(before[x]) + isBlack(after[x]) + static_cast<int>(left) + right;
        if (row[x] == 0) row[x] = 1;
        if (row[x] == 255) row[x] = around >= 3 ? 1 : 254;
        left = isBlack(row[x]) ? 1 : 0;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
