// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

namespace host {

// Throws UsageError when the first word of a command line names no command, with the nearest one.
void CheckCommandName(const CLI::App& app, int argc, const char* const* argv);

}  // namespace host
