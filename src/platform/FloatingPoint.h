// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

namespace tavrix::platform {

// While it lives, arithmetic rounds to nearest, keeps denormal numbers and traps nothing, whatever the host
// has set; the host's setting, flags included, comes back at the end.
class DefaultFloatingPoint {
  public:
    DefaultFloatingPoint() : hosts(_mm_getcsr()) {
        constexpr unsigned kDefault = 0x1F80;  // all exceptions masked, nothing else set
        _mm_setcsr(kDefault);
    }
    ~DefaultFloatingPoint() { _mm_setcsr(hosts); }
    DefaultFloatingPoint(const DefaultFloatingPoint&) = delete;
    DefaultFloatingPoint& operator=(const DefaultFloatingPoint&) = delete;

  private:
    unsigned hosts;
};

}  // namespace tavrix::platform
