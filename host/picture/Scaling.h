// SPDX-License-Identifier: MIT
#pragma once

#include "picture/HostImage.h"

namespace host {

// The picture with both sides multiplied by factor (above 0) and rounded: bicubic where it grows, means
// of areas where it shrinks. A 1-bit picture comes back gray. Throws PictureError of kind kFailed when
// a side would be longer than the library takes.
HostImage Scaled(HostImage image, double factor);

}  // namespace host
