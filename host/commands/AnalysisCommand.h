// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "commands/Convert.h"
#include "commands/FileOptions.h"
#include "operations/Findings.h"
#include "picture/HostImage.h"

namespace host {

struct AnalysisOptions {
    FileOptions files;
    PictureOptions output;  // the 1-bit picture
    ConvertOptions convert;
    bool wantsJson = false;  // on standard output
    std::string jsonPlace;   // one file of JSON a picture
    std::string overlay;
    std::string overlayFormat = "jpg";  // in a folder
};

// Inputs, --mode, -o, --json, --json-out and --overlay.
void AddAnalysisOptions(CLI::App& command, AnalysisOptions& options);

// The run of a command that looks for something on 1-bit pages: read, binarize, find, report.
ExitCode RunAnalysisCommand(const AnalysisOptions& options,
                            const std::function<Findings(const Conversion&)>& find);

}  // namespace host
