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
#endif
#endif
