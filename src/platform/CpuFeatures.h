// SPDX-License-Identifier: MIT
#pragma once

namespace tavrix::platform {

// True when the processor and the system run AVX2 code.
inline bool HasAvx2() {
#ifdef TAVRIX_WITH_AVX2
    static const bool has = __builtin_cpu_supports("avx2");
    return has;
#else
    return false;
#endif
}

}  // namespace tavrix::platform

// Kernels are compiled twice from one source, into the namespaces `baseline` and `avx2` (see
// cmake/Kernels.cmake). TAVRIX_KERNEL(Name) is the one for this machine.
#ifdef TAVRIX_WITH_AVX2
#define TAVRIX_KERNEL(name) (::tavrix::platform::HasAvx2() ? avx2::name : baseline::name)
#else
#define TAVRIX_KERNEL(name) baseline::name
#endif
