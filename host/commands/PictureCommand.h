// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "commands/FileOptions.h"
#include "picture/Picture.h"

namespace host {

// The run of a command that turns every page into another: read, transform, write.
ExitCode RunPictureCommand(const FileOptions& files, const PictureOptions& output,
                           const std::function<Picture(Picture, Outcome&)>& transform,
                           Colours colours = Colours::kNeeded);

}  // namespace host
