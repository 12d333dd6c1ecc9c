// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "platform/CpuFeatures.h"

namespace tavrix::test {

// A unit's kernels at every level that this machine runs.
template <class Table>
std::vector<const Table*> LevelsOf() {
    std::vector<const Table*> levels{&Table::baseline};
#ifdef TAVRIX_WITH_AVX2
    if (platform::HasAvx2()) levels.push_back(&Table::avx2);
#endif
    return levels;
}

}  // namespace tavrix::test
