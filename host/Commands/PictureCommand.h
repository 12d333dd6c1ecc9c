// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

#include "Commands/FileOptions.h"
#include "Picture.h"

namespace tavrix::host {

// The run of a command that turns every page into another: read, transform, write.
ExitCode RunPictureCommand(const FileOptions& files, const PictureOptions& output,
                           const std::function<Picture(Picture)>& transform);

}  // namespace tavrix::host
