// SPDX-License-Identifier: MIT
#include "binarize/GradientKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

constexpr int kRows = GradientKernels::kRows;
constexpr int kLeastSum = 4, kFirstBlackSum = 400;  // of the four neighbours' magnitudes

// Both gradients come from sums of 2 x 2 pixels. With w(x, y) for the four from (x, y) on,
//   gx + gy = 2 (w(x, y) - w(x - 1, y - 1)) and gx - gy = 2 (w(x, y - 1) - w(x - 1, y)),
// and |gx| + |gy| is the greater size of the two.

#ifndef TAVRIX_PLAIN_KERNELS
enum class Place { kFirst, kInside, kLast };  // of a step's columns in the row

// Sums of 16 bits for each two columns: of the even column and the one before it, of the two, and of the odd
// column and the one after it. Where that costs nothing, twice the sums.
#ifdef __AVX2__
constexpr int kSumFactor = 2;
#else
constexpr int kSumFactor = 1;
#endif
struct Sums {
    Vector before, within, after;
};

// The bytes moved up or down by one, with a 0 for the one that is missing.
inline Vector FromPrevious(Vector bytes) {
#ifdef __AVX2__
    return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(bytes, bytes, 0x08), 15);
#else
    return _mm_slli_si128(bytes, 1);
#endif
}
inline Vector FromNext(Vector bytes) {
#ifdef __AVX2__
    return _mm256_alignr_epi8(_mm256_permute2x128_si256(bytes, bytes, 0x81), bytes, 1);
#else
    return _mm_srli_si128(bytes, 1);
#endif
}

template <Place place>
inline Sums SumsOfPairs(const Byte* row) {
    const Vector at = Load(row);
    const Vector previous = place == Place::kFirst ? FromPrevious(at) : Load(row - 1);
    const Vector next = place == Place::kLast ? FromNext(at) : Load(row + 1);
#ifdef __AVX2__
    const auto sum = [](Vector bytes) { return _mm256_maddubs_epi16(bytes, Fill(kSumFactor)); };
    return {sum(previous), sum(at), sum(next)};
#else
    const auto first = [](Vector bytes) { return bytes & FillWords(255); };
    const auto second = [](Vector bytes) { return _mm_srli_epi16(bytes, 8); };
    const Vector even = second(previous), odd = first(next);
    return {AddWords(first(previous), even), AddWords(even, odd), AddWords(odd, second(next))};
#endif
}

inline Sums Add(const Sums& a, const Sums& b) {
    return {AddWords(a.before, b.before), AddWords(a.within, b.within), AddWords(a.after, b.after)};
}

// The greater of |a| and |b|, of words.
inline Vector GreaterSize(Vector a, Vector b) {
#ifdef __AVX2__
    const auto size = [](Vector words) { return _mm256_abs_epi16(words); };
#else
    const auto size = [](Vector words) { return _mm_max_epi16(words, SubtractWords(Vector{}, words)); };
#endif
    return TAVRIX_VECTOR(max_epi16)(size(a), size(b));
}

template <Place place>
inline void GradientStep(const Byte* const* rows, int x, Byte* const* gradients) {
    Sums last = SumsOfPairs<place>(rows[1] + x);
    Sums above = Add(SumsOfPairs<place>(rows[0] + x), last);
    for (int y = 0; y < kRows; ++y) {
        const Sums next = SumsOfPairs<place>(rows[y + 2] + x);
        const Sums below = Add(last, next);
        const Vector even =
            GreaterSize(SubtractWords(below.within, above.before), SubtractWords(above.within, below.before));
        const Vector odd =
            GreaterSize(SubtractWords(below.after, above.within), SubtractWords(above.after, below.within));
        const Vector bytes = (even & FillWords(255)) | TAVRIX_VECTOR(slli_epi16)(odd, 8);
        Store(gradients[y] + x, kSumFactor == 2 ? bytes : TAVRIX_VECTOR(add_epi8)(bytes, bytes));
        last = next;
        above = below;
    }
}

// Half the sum of the four is exact, since all are even; above 255 it is black all the same.
inline Vector EdgeLevels(Vector values, Vector previous, Vector above, const Byte* gradient, Vector below) {
    const Vector before = TAVRIX_VECTOR(avg_epu8)(above, Load(gradient - 1));
    const Vector after = TAVRIX_VECTOR(avg_epu8)(below, Load(gradient + 1));
    constexpr int kToLowest = -128 - kLeastSum / 2;
    const Vector level = TAVRIX_VECTOR(add_epi8)(TAVRIX_VECTOR(adds_epu8)(before, after), Fill(kToLowest));
    const Vector isInside = TAVRIX_VECTOR(cmpgt_epi8)(Fill(kFirstBlackSum / 2 + kToLowest), level);
    return isInside & ~Equal(values, previous);
}

// The values of a step's rows, from the row before them on.
struct Values {
    Vector rows[kRows + 1];
};
inline Values LoadValues(Byte* const* rows, const Byte* previous, int x) {
    Values values{{Load(previous + x)}};
    for (int y = 0; y < kRows; ++y) values.rows[y + 1] = Load(rows[y] + x);
    return values;
}

inline void EdgeLevelStep(const Values& values, Byte* const* rows, Byte* previous,
                          const Byte* const* gradients, int x) {
    Vector above = Load(gradients[0] + x), at = Load(gradients[1] + x);
    for (int y = 0; y < kRows; ++y) {
        const Vector below = Load(gradients[y + 2] + x);
        Store(rows[y] + x,
              EdgeLevels(values.rows[y + 1], values.rows[y], above, gradients[y + 1] + x, below));
        above = at;
        at = below;
    }
    Store(previous + x, values.rows[kRows]);
}
#endif

void GradientRows(const GradientKernels::Row (&sources)[kRows + 2], int width,
                  Byte* const (&targets)[kRows]) {
    // Copies, which bytes that are stored cannot change.
    const Byte* rows[kRows + 2];
    Byte* gradients[kRows];
    for (int y = 0; y < kRows + 2; ++y) rows[y] = sources[y];
    for (int y = 0; y < kRows; ++y) gradients[y] = targets[y];
#ifndef TAVRIX_PLAIN_KERNELS
    if (width > kVectorBytes) {
        const int last = width - kVectorBytes;
        GradientStep<Place::kFirst>(rows, 0, gradients);
        for (int x = kVectorBytes; x < last; x += kVectorBytes) {
            GradientStep<Place::kInside>(rows, x, gradients);
        }
        GradientStep<Place::kLast>(rows, last, gradients);
        return;
    }
#endif
    const auto sum = [&](int x, int y) {
        const int left = x < 0 ? 0 : rows[y][x] + rows[y + 1][x];
        return left + (x + 1 == width ? 0 : rows[y][x + 1] + rows[y + 1][x + 1]);
    };
    const auto size = [](int value) { return value < 0 ? -value : value; };
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; x < width; ++x) {
            const int a = size(sum(x, y + 1) - sum(x - 1, y)), b = size(sum(x, y) - sum(x - 1, y + 1));
            gradients[y][x] = static_cast<Byte>(2 * (a > b ? a : b));
        }
    }
}

void EdgeLevelRows(Byte* const (&targets)[kRows], Byte* previous,
                   const GradientKernels::Row (&sources)[kRows + 2], int width) {
    Byte* rows[kRows];  // copies, as above
    const Byte* gradients[kRows + 2];
    for (int y = 0; y < kRows; ++y) rows[y] = targets[y];
    for (int y = 0; y < kRows + 2; ++y) gradients[y] = sources[y];
#ifndef TAVRIX_PLAIN_KERNELS
    const int last = width - kVectorBytes;
    if (last >= 0) {
        // The last step may overlap the one before it: it takes its values before they are overwritten.
        const Values lastValues = LoadValues(rows, previous, last);
        for (int x = 0; x < last; x += kVectorBytes) {
            EdgeLevelStep(LoadValues(rows, previous, x), rows, previous, gradients, x);
        }
        EdgeLevelStep(lastValues, rows, previous, gradients, last);
        return;
    }
#endif
    for (int y = 0; y < kRows; ++y) {
        for (int x = 0; x < width; ++x) {
            const int sum =
                gradients[y][x] + gradients[y + 1][x - 1] + gradients[y + 1][x + 1] + gradients[y + 2][x];
            const Byte value = rows[y][x];
            const bool isWhite = value != previous[x] && sum >= kLeastSum && sum < kFirstBlackSum;
            previous[x] = value;
            rows[y][x] = isWhite ? 255 : 0;
        }
    }
}

}  // namespace

const GradientKernels GradientKernels::TAVRIX_KERNEL_LEVEL{.gradientRows = GradientRows,
                                                           .edgeLevelRows = EdgeLevelRows};

}  // namespace tavrix
