// SPDX-License-Identifier: MIT
#pragma once

// For developers: names of the branches that a page takes. Only where TAVRIX_TRACE is defined, which the
// library's own build never does; whoever defines it supplies TraceBranch.
#ifdef TAVRIX_TRACE
namespace tavrix {
void TraceBranch(const char* name);
}
#define TAVRIX_TRACE_BRANCH(name) ::tavrix::TraceBranch(name)
#else
#define TAVRIX_TRACE_BRANCH(name) static_cast<void>(0)
#endif
