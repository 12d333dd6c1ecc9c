// SPDX-License-Identifier: MIT
#include "regions/RegionKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

int CountTips(const Byte* row, const Byte* after, int count) {
    int x = 0, tips = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    LaneCounter counter;
    const Vector zero = Fill(0);
    for (; x + kVectorBytes <= count; x += kVectorBytes) {
        const Vector around =
            Min(Min(Load(row + x + 1), Load(after + x - 1)), Min(Load(after + x), Load(after + x + 1)));
        counter.Add(~Equal(around, zero) & Equal(Load(row + x), zero));
    }
    tips = counter.Total();
#endif
    for (; x < count; ++x) {
        tips += row[x] == 0 && row[x + 1] != 0 && after[x - 1] != 0 && after[x] != 0 && after[x + 1] != 0;
    }
    return tips;
}

void ThresholdRegionRow(const Byte* row, int count, int threshold, bool force, Byte* target,
                        std::int64_t* dark, std::int64_t* light) {
    const Byte forced = force ? 255 : 0;
    int darkCount = 0, lightCount = 0, x = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    if (threshold >= 1 && threshold <= 255) {
        LaneCounter darkLanes, lightLanes;
        const Vector limit = Fill(threshold), zero = Fill(0), keep = Fill(255 - forced);
        for (; x + kVectorBytes <= count; x += kVectorBytes) {
            const Vector bytes = Load(row + x);
            const Vector bright = Equal(Max(bytes, limit), bytes);
            const Vector black = Equal(Load(target + x), zero) & keep;
            const Vector white = ~black & bright;
            Store(target + x, white);
            darkLanes.Add(Equal(bright, zero));
            lightLanes.Add(white);
        }
        darkCount = darkLanes.Total();
        lightCount = lightLanes.Total();
    }
#endif
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
    constexpr int kWordBits = 64;
    for (int i = 0; i <= count / kWordBits + 1; ++i) words[i] = 0;
    int x = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    constexpr int kStep = 16;
    const __m128i low = _mm_set1_epi16(255), zero = _mm_setzero_si128();
    const auto evens = [=](int at) { return _mm_and_si128(Load16(row + 2 * at), low); };
    for (; x + kStep <= count; x += kStep) {
        const __m128i bytes = _mm_packus_epi16(evens(x), evens(x + kStep / 2));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, zero)));
        words[x / kWordBits] |= std::uint64_t{bits} << x % kWordBits;
    }
#endif
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
    const auto isBlack = [](Byte value) { return value <= 1; };
    std::uint64_t left = isBlack(row[-1]) ? 1 : 0;
    int x = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    constexpr int kStep = 64, kLane = 16;
    for (; x + kStep < count; x += kStep) {
        const auto bits = [x](const Byte* from, auto test) {
            std::uint64_t result = 0;
            for (int i = 0; i < kStep; i += kLane) {
                const int mask = _mm_movemask_epi8(test(Load16(from + x + i)));
                result |= std::uint64_t{static_cast<unsigned>(mask)} << i;
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
            Byte* lanes = row + x + i;
            const __m128i pairs = _mm_set1_epi16(static_cast<short>(filled >> i));
            const __m128i spread =
                _mm_shufflehi_epi16(_mm_shufflelo_epi16(_mm_unpacklo_epi8(pairs, pairs), 0x00), 0x55);
            const __m128i isFilled = _mm_cmpeq_epi8(_mm_and_si128(spread, bitOfLane), bitOfLane);
            const __m128i old = Load16(lanes);
            const __m128i isWhite = _mm_cmpeq_epi8(old, _mm_set1_epi8(-1));
            const __m128i isZero = _mm_cmpeq_epi8(old, _mm_setzero_si128());
            // 255 + 2 is 1, 255 - 1 is 254, 0 + 1 is 1.
            const __m128i change =
                _mm_or_si128(_mm_and_si128(isFilled, _mm_set1_epi8(2)), _mm_andnot_si128(isFilled, isWhite));
            const __m128i marked = _mm_add_epi8(old, _mm_and_si128(isWhite, change));
            Store16(lanes, _mm_sub_epi8(marked, isZero));
        }
    }
#endif
    for (; x < count; ++x) {
        const bool right = x + 1 < count || !blackAfter ? isBlack(row[x + 1]) : true;
        const int around = isBlack(before[x]) + isBlack(after[x]) + static_cast<int>(left) + right;
        if (row[x] == 0) row[x] = 1;
        if (row[x] == 255) row[x] = around >= 3 ? 1 : 254;
        left = isBlack(row[x]) ? 1 : 0;
    }
}

}  // namespace

const RegionKernels RegionKernels::TAVRIX_KERNEL_LEVEL{.countTips = CountTips,
                                                       .thresholdRegionRow = ThresholdRegionRow,
                                                       .mergeRow = MergeRow,
                                                       .evenZeroBits = EvenZeroBits,
                                                       .applyEdgesRow = ApplyEdgesRow,
                                                       .markRow = MarkRow,
                                                       .fillAndMarkRow = FillAndMarkRow};

}  // namespace tavrix
