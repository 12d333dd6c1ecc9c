// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "platform/Intrinsics.h"

// Vectors of the level that a kernel source is compiled for: 16 bytes at baseline, 32 at avx2. For kernel
// sources only. All of it has internal linkage, so that no copy made for one level is linked into another.
//
// With TAVRIX_PLAIN_KERNELS there are none: the loops that finish what vectors leave over then do it all, and
// give the same bytes.
namespace tavrix {
namespace {

using Byte = std::uint8_t;

#ifndef TAVRIX_PLAIN_KERNELS
#ifdef __AVX2__
using Vector = __m256i;
#define TAVRIX_VECTOR(operation) _mm256_##operation
#else
using Vector = __m128i;
#define TAVRIX_VECTOR(operation) _mm_##operation
#endif
inline constexpr int kVectorBytes = sizeof(Vector);
inline constexpr int kVectorWords = kVectorBytes / 2;  // of 16 bits

inline __m128i Load16(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void Store16(void* to, __m128i bytes) {
    _mm_storeu_si128(static_cast<__m128i*>(to), bytes);
}
inline Vector Load(const void* from) {
#ifdef __AVX2__
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
#else
    return Load16(from);
#endif
}
inline void Store(void* to, Vector bytes) {
#ifdef __AVX2__
    _mm256_storeu_si256(static_cast<__m256i*>(to), bytes);
#else
    Store16(to, bytes);
#endif
}

// Asks for memory that comes up, `distance` bytes on; there need not be any. Loops that read several bytes
// for each that they write, or work long on each, outrun processors that look ahead by themselves only a
// little.
inline void Prefetch(const Byte* from, std::uintptr_t distance) {
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(from) + distance));
}

// kVectorWords bytes as words.
inline Vector LoadWords(const Byte* from) {
#ifdef __AVX2__
    return _mm256_cvtepu8_epi16(Load16(from));
#else
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)), _mm_setzero_si128());
#endif
}
// Signed words as bytes, limited to 0..255.
inline void StoreWords(Byte* to, Vector words) {
#ifdef __AVX2__
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0x08);
    Store16(to, _mm256_castsi256_si128(bytes));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(words, words));
#endif
}
// Word masks (0 or all bits) as bytes 0 or 255.
inline void StoreMasks(Byte* to, Vector masks) {
#ifdef __AVX2__
    Store16(to, _mm_packs_epi16(_mm256_castsi256_si128(masks), _mm256_extracti128_si256(masks, 1)));
#else
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi16(masks, masks));
#endif
}

inline Vector Fill(int byte) {
    return TAVRIX_VECTOR(set1_epi8)(static_cast<char>(byte));
}
inline Vector FillWords(int word) {
    return TAVRIX_VECTOR(set1_epi16)(static_cast<short>(word));
}
// Hides a factor from the compiler, which would turn the product into a chain of shifts and sums.
inline short Opaque(short factor) {
    asm("" : "+r"(factor));
    return factor;
}

inline Vector Equal(Vector a, Vector b) {
    return TAVRIX_VECTOR(cmpeq_epi8)(a, b);
}
inline Vector Min(Vector a, Vector b) {
    return TAVRIX_VECTOR(min_epu8)(a, b);
}
inline Vector Max(Vector a, Vector b) {
    return TAVRIX_VECTOR(max_epu8)(a, b);
}
inline Vector AddWords(Vector a, Vector b) {
    return TAVRIX_VECTOR(add_epi16)(a, b);
}
inline Vector SubtractWords(Vector a, Vector b) {
    return TAVRIX_VECTOR(sub_epi16)(a, b);
}

// Counts the lanes of byte masks (255 counts one). Byte counters go into the total before they can
// overflow.
class LaneCounter {
  public:
    void Add(Vector mask) {
        counters = TAVRIX_VECTOR(sub_epi8)(counters, mask);
        if (++adds == 255) Flush();
    }
    int Total() {
        Flush();
        return total;
    }

  private:
    void Flush() {
        const Vector sums = TAVRIX_VECTOR(sad_epu8)(counters, Vector{});  // one a half, or one a quarter
#ifdef __AVX2__
        const __m128i halves = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
#else
        const __m128i halves = sums;
#endif
        total += _mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4);
        counters = Vector{};
        adds = 0;
    }

    Vector counters{};
    int adds = 0, total = 0;
};
#endif

}  // namespace
}  // namespace tavrix
