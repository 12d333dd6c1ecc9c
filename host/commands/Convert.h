// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include "automatic/Conversion.h"
#include "batch/Jobs.h"

namespace host {

struct ConvertOptions {
    ConversionOptions conversion;
    bool isVerbose = false;
};

// --mode and --verbose.
void AddModeOption(CLI::App& command, ConvertOptions& options);
// --scale: 1 to 3, or auto.
void AddScaleOption(CLI::App& command, ConvertOptions& options);

// Black and white under these options; warnings, and what was chosen if that is wanted, become notes.
Conversion Convert(HostImage image, const ConvertOptions& options, Outcome& outcome);

}  // namespace host
