/* SPDX-License-Identifier: MIT
 * libtavrixrows: what NumPy is slow at for the Python module. */
#include <stddef.h>
#include <stdint.h>

#if defined(__x86_64__) || defined(__i386__)
#include <tmmintrin.h>
#define HAS_SHUFFLE 1

enum { kPixels = 5 }; /* in a vector of 16 bytes, whose last one is written again by the next */

/* Returns how many pixels of the row are done: all but the last few. */
__attribute__((target("ssse3"))) static size_t SwapByShuffle(uint8_t* to, const uint8_t* from, size_t width) {
    const __m128i order = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
    size_t x = 0;
    for (; 3 * x + 16 <= 3 * width; x += kPixels) {
        const __m128i pixels = _mm_loadu_si128((const __m128i*)(from + 3 * x));
        _mm_storeu_si128((__m128i*)(to + 3 * x), _mm_shuffle_epi8(pixels, order));
    }
    return x;
}
#endif

/* Copies rows of 3 bytes a pixel, the first and the last byte of every pixel exchanged: red, green, blue to
   blue, green, red or back. Steps are bytes from row to row, negative ones go up. */
__attribute__((visibility("default"))) void TavrixCopySwapped(uint8_t* to, ptrdiff_t toStep, const uint8_t* from,
                                                              ptrdiff_t fromStep, size_t width, size_t height) {
    for (size_t y = 0; y < height; ++y, to += toStep, from += fromStep) {
        size_t x = 0;
#ifdef HAS_SHUFFLE
        if (__builtin_cpu_supports("ssse3")) x = SwapByShuffle(to, from, width);
#endif
        for (; x < width; ++x) {
            to[3 * x] = from[3 * x + 2];
            to[3 * x + 1] = from[3 * x + 1];
            to[3 * x + 2] = from[3 * x];
        }
    }
}
