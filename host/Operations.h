// SPDX-License-Identifier: MIT
#pragma once

#include "HostImage.h"
#include "Modes.h"

// The library's functions on host images. A refusal throws PictureError of kind kFailed.
namespace tavrix::host {

// A 1-bit picture; one that is 1-bit already comes back as it was. byBlocks: the block-wise variant of
// the mode, for colour by way of gray.
HostImage Binarize(HostImage image, const Mode& mode, bool byBlocks = false);

}  // namespace tavrix::host
