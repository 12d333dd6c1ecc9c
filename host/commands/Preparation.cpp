// SPDX-License-Identifier: MIT
#include "commands/Preparation.h"

#include <cstdio>
#include <string>
#include <utility>

#include "picture/Scaling.h"

namespace host {
namespace {

constexpr double kMostEnlarged = 4, kMostReduced = 16;  // times

Picture Resampled(Picture page, double dotsPerInch) {
    if (!page.resolution.IsKnown()) {
        throw PictureError(PictureError::kFailed,
                           "the picture does not say its resolution: take --scale instead of --dpi");
    }
    const double factor = dotsPerInch / page.resolution.x;
    if (factor > kMostEnlarged || factor < 1 / kMostReduced) {
        char text[160];
        std::snprintf(text, sizeof text,
                      "--dpi %g is too far from the picture's %g: at most %g times more, %g times less",
                      dotsPerInch, page.resolution.x, kMostEnlarged, kMostReduced);
        throw PictureError(PictureError::kFailed, text);
    }
    if (factor == 1) return page;
    return {Scaled(std::move(page.image), factor), {dotsPerInch, page.resolution.y * factor}};
}

}  // namespace

void AddResolutionOption(CLI::App& command, Preparation& preparation) {
    constexpr double kLeast = 1, kMost = 10000;
    command
        .add_option("--dpi", preparation.dotsPerInch,
                    "Enlarge or reduce to that many dots per inch, as the picture says its resolution")
        ->type_name("N")
        ->check(CLI::Range(kLeast, kMost))
        ->excludes(command.get_option("--scale"));
}

Picture Prepare(Picture page, const Preparation& preparation, bool isVerbose, Outcome& outcome) {
    if (preparation.straighten.straightens || preparation.straighten.crops) {
        std::string remark;
        page = Straighten(std::move(page), preparation.straighten, remark);
        if (isVerbose) outcome.notes.push_back(remark);
    }
    if (preparation.dotsPerInch != 0) page = Resampled(std::move(page), preparation.dotsPerInch);
    return page;
}

}  // namespace host
