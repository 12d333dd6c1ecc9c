// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include "Jobs.h"

namespace tavrix::host {

// Each adds subcommands whose callback leaves the exit code of the run in code.
void AddBinarizeCommand(CLI::App& app, ExitCode& code);
void AddModesCommand(CLI::App& app);

}  // namespace tavrix::host
