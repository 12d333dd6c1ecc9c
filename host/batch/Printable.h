// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace host {

// The text for terminals and logs: control characters, and bytes that are not UTF-8, as \n, \t or \xNN.
std::string Printable(const std::string& text);

}  // namespace host
