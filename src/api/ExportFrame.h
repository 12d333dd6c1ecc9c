// SPDX-License-Identifier: MIT
#pragma once

#include "api/ImageTool.h"
#include "image/DibImage.h"
#include "platform/Guarded.h"
#include "tavrix/tavrix.h"

// The frame that every exported function runs in: guarded, it wraps the host's image, checks it, converts it
// where the operation wants gray, runs the operation and copies out. Objects release themselves on every
// path.
namespace tavrix::api {

// The bit depths that an operation accepts.
enum Depths : unsigned { k1Bit = 1, k8Bit = 2, k24Bit = 4, kAnyDepth = k1Bit | k8Bit | k24Bit };

// Wraps a host's image. Null when it breaks the rules of tavrix.h, is of another depth, or memory runs
// out; the host's block is then as it was.
[[nodiscard]] ImagePtr Wrap(HGLOBAL handle, unsigned depths);
[[nodiscard]] ImagePtr Wrap(const DibRecord& record, unsigned depths);

// An 8-bit gray copy of a 24-bit image; any other image as it is. Null when memory runs out.
[[nodiscard]] ImagePtr ToGray(ImagePtr image, DibImage::Room room = DibImage::Room::kNone);

}  // namespace tavrix::api
