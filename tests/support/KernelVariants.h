// SPDX-License-Identifier: MIT
#pragma once

#include "platform/CpuFeatures.h"

namespace tavrix::test {

// Runs a check on a kernel of every level that this machine has:
// OnVariants(TAVRIX_VARIANTS(Table, kernel), check).
template <class Kernel, class Check>
void OnVariants(Kernel* baseline, [[maybe_unused]] Kernel* avx2, Check check) {
    check(baseline);
    if (platform::HasAvx2()) check(avx2);
}

#ifdef TAVRIX_WITH_AVX2
#define TAVRIX_VARIANTS(table, kernel) table::baseline.kernel, table::avx2.kernel
#else
#define TAVRIX_VARIANTS(table, kernel) table::baseline.kernel, table::baseline.kernel
#endif

}  // namespace tavrix::test
