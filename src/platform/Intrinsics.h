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
// Of SIMDe's own one a bit at a time is worked out.
#undef _mm_movemask_epi8
#define _mm_movemask_epi8(bytes) static_cast<int>(wasm_i8x16_bitmask(bytes))
#endif
#endif
#endif
