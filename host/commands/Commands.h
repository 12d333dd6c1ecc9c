// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include "batch/Jobs.h"

namespace host {

// Each adds subcommands whose callback leaves the exit code of the run in code.
void AddBinarizeCommand(CLI::App& app, ExitCode& code);
void AddCardCommand(CLI::App& app, ExitCode& code);
void AddCompareCommand(CLI::App& app, ExitCode& code);
void AddComponentsCommand(CLI::App& app, ExitCode& code);
void AddLinesCommand(CLI::App& app, ExitCode& code);
void AddLogoCommand(CLI::App& app, ExitCode& code);
void AddMorphCommand(CLI::App& app, ExitCode& code);
void AddPadCommand(CLI::App& app, ExitCode& code);
void AddRotateCommand(CLI::App& app, ExitCode& code);
void AddScanCommand(CLI::App& app, ExitCode& code);
void AddTrueLineCommand(CLI::App& app, ExitCode& code);
void AddTurnCommand(CLI::App& app, ExitCode& code);
void AddModesCommand(CLI::App& app);

}  // namespace host
