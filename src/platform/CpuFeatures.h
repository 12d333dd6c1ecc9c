// SPDX-License-Identifier: MIT
#pragma once

namespace tavrix::platform {

// True when the processor and the system run AVX2 code. Tests a bit that the compiler's run-time library
// has read before any code of ours runs.
inline bool HasAvx2() {
#ifdef TAVRIX_WITH_AVX2
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

// A unit's kernels for this machine. Each kernel source is compiled once a level (cmake/Kernels.cmake) and
// fills one constant table of functions, `Table::baseline` (SSE2) or `Table::avx2`. Nothing is initialised
// when the library is loaded and nothing is locked; ask once an operation, not once a row.
template <class Table>
const Table& KernelsOf() {
#ifdef TAVRIX_WITH_AVX2
    if (HasAvx2()) return Table::avx2;
#endif
    return Table::baseline;
}

}  // namespace tavrix::platform
