// SPDX-License-Identifier: MIT
#pragma once

// The 128-bit vector operations under the names that x86 gives them: its own there, on other processors
// SIMDe's, which are made of what the processor has. With TAVRIX_PLAIN_KERNELS there are none.
#ifndef TAVRIX_PLAIN_KERNELS
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/sse2.h>
#ifdef __wasm_simd128__
// SIMDe's own ones work out a bit and a word at a time.
#undef _mm_movemask_epi8
#define _mm_movemask_epi8(bytes) static_cast<int>(wasm_i8x16_bitmask(bytes))
#undef _mm_mulhi_epu16
#define _mm_mulhi_epu16(a, b)                                                                                \
    wasm_i16x8_shuffle(wasm_u32x4_extmul_low_u16x8(a, b), wasm_u32x4_extmul_high_u16x8(a, b), 1, 3, 5, 7, 9, \
                       11, 13, 15)
#endif
#endif
#endif
