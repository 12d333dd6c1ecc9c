// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include "batch/Jobs.h"
#include "straighten/Straighten.h"

namespace host {

// What happens to a page before it becomes black and white.
struct Preparation {
    StraightenOptions straighten;
    double dotsPerInch = 0;  // of the result; 0: as the page

    bool IsAny() const { return straighten.straightens || straighten.crops || dotsPerInch != 0; }
};

// --dpi; a command that has it takes --scale as well, but not both.
void AddResolutionOption(CLI::App& command, Preparation& preparation);

// What was done becomes a note if that is wanted. Throws PictureError where the page does not say its
// resolution, or is far from the one wanted.
Picture Prepare(Picture page, const Preparation& preparation, bool isVerbose, Outcome& outcome);

}  // namespace host
