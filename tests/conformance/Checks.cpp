// SPDX-License-Identifier: MIT
#include "Checks.h"

#include <cstdio>

namespace tavrix::conformance {
namespace {

int failures = 0;

}  // namespace

void Require(bool holds, const std::string& what) {
    if (holds) return;
    std::printf("FAILED %s\n", what.c_str());
    ++failures;
}

int Failures() {
    return failures;
}

}  // namespace tavrix::conformance
