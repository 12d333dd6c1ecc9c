// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix::conformance {

// Outside Windows every build of the library has global memory of its own. Pictures and stores lie in that of
// the build which was chosen last.
#if !defined(_WIN32) && !defined(__EMSCRIPTEN__)
inline decltype(&::GlobalAlloc) GlobalAlloc = nullptr;
inline decltype(&::GlobalLock) GlobalLock = nullptr;
inline decltype(&::GlobalFree) GlobalFree = nullptr;
inline decltype(&::GlobalHandle) GlobalHandle = nullptr;
inline decltype(&::GlobalSize) GlobalSize = nullptr;
inline decltype(&::GlobalFlags) GlobalFlags = nullptr;
#endif

}  // namespace tavrix::conformance
