// SPDX-License-Identifier: MIT
#pragma once

#include "platform/CpuFeatures.h"

namespace tavrix::test {

// Runs a check on every variant of a kernel that this machine has: OnVariants(TAVRIX_VARIANTS(Name), check).
template <class Kernel, class Check>
void OnVariants(Kernel* baseline, [[maybe_unused]] Kernel* avx2, Check check) {
    check(baseline);
#ifdef TAVRIX_WITH_AVX2
    if (platform::HasAvx2()) check(avx2);
#endif
}

#ifdef TAVRIX_WITH_AVX2
#define TAVRIX_VARIANTS(name) baseline::name, avx2::name
#else
#define TAVRIX_VARIANTS(name) baseline::name, baseline::name
#endif

}  // namespace tavrix::test
