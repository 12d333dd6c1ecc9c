// SPDX-License-Identifier: MIT
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#include <emmintrin.h>
#else
#include <cfenv>
#endif

namespace tavrix::platform {

// While it lives, arithmetic rounds to nearest, keeps denormal numbers and traps nothing, whatever the host
// has set; the host's setting, flags included, comes back at the end.
class DefaultFloatingPoint {
  public:
#if defined(__x86_64__) || defined(__i386__)
    DefaultFloatingPoint() : hosts(_mm_getcsr()) {
        constexpr unsigned kDefault = 0x1F80;  // all exceptions masked, nothing else set
        _mm_setcsr(kDefault);
    }
    ~DefaultFloatingPoint() {
        _mm_setcsr(hosts);
    }
#else
    DefaultFloatingPoint() {
        std::fegetenv(&hosts);
        std::fesetenv(FE_DFL_ENV);
    }
    ~DefaultFloatingPoint() {
        std::fesetenv(&hosts);
    }
#endif
    DefaultFloatingPoint(const DefaultFloatingPoint&) = delete;
    DefaultFloatingPoint& operator=(const DefaultFloatingPoint&) = delete;

  private:
#if defined(__x86_64__) || defined(__i386__)
    unsigned hosts;  // the old unit's state is left alone: no arithmetic of ours runs there
#else
    std::fenv_t hosts;
#endif
};

}  // namespace tavrix::platform
