// SPDX-License-Identifier: MIT
#pragma once

// HOST_FOR_EVERY_PROCESSOR before a function: compiled for processors with wide vectors as well, where the
// compiler can; the fitting one is chosen when the program is loaded. HOST_HAS_AVX2_VARIANTS tells that it
// can.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define HOST_HAS_AVX2_VARIANTS
#define HOST_FOR_EVERY_PROCESSOR [[gnu::target_clones("avx2", "default")]]
#else
#define HOST_FOR_EVERY_PROCESSOR
#endif
