// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tavrix::conformance {

// What must hold for every call in every build, whatever the result. A failure is printed and counted.
void Require(bool holds, const std::string& what);
int Failures();

}  // namespace tavrix::conformance
