// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "tavrix/tavrix.h"

namespace tavrix {

// Writes an image as a Windows bitmap file. False when the file cannot be made (silently) or not be written
// (with a message).
bool WriteBmpFile(const char* path, const BITMAPINFOHEADER& header, const RGBQUAD* palette,
                  const std::uint8_t* bits);

}  // namespace tavrix
