// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "platform/FloatingPoint.h"

namespace tavrix {

// Runs a body that gives a Result. The one place where memory that ran out becomes a refusal: whatever the
// body throws ends here, and the refusal is the result. Arithmetic runs in the default mode, not the host's.
template <class Result, class Body>
[[nodiscard]] Result Guarded(Result refusal, Body&& body) noexcept {
    const platform::DefaultFloatingPoint arithmetic;
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return refusal;
    }
}

}  // namespace tavrix
