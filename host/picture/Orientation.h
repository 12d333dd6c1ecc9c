// SPDX-License-Identifier: MIT
#pragma once

#include "picture/Picture.h"

namespace host {

// Brings a stored picture upright. orientation: 1 to 8 as EXIF and TIFF count them; others as 1.
void Orient(Picture& picture, int orientation);

}  // namespace host
