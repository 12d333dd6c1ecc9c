// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "image/DibImage.h"
#include "image/ImageTool.h"
#include "tavrix/tavrix.h"

// The frame that every exported function runs in: wrap the host's image, check it, convert it where the
// operation wants gray, run, copy out. Objects release themselves on every path.
namespace tavrix::api {

// The bit depths that an operation accepts.
enum Depths : unsigned { k1Bit = 1, k8Bit = 2, k24Bit = 4, kAnyDepth = k1Bit | k8Bit | k24Bit };

using ImagePtr = std::unique_ptr<DibImage>;

// Wraps a host's image. Null when it breaks the rules of tavrix.h, is of another depth, or memory runs
// out; the host's block is then as it was.
ImagePtr Wrap(HGLOBAL handle, unsigned depths);
ImagePtr Wrap(const DibRecord& record, unsigned depths);

// An 8-bit gray copy of a 24-bit image; any other image as it is. Null when memory runs out.
ImagePtr ToGray(ImagePtr image);

// Runs an export's body. Nothing that is thrown leaves it: the export then gives its refusal value.
template <class Result, class Body>
Result Guarded(Result refusal, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return refusal;
    }
}

}  // namespace tavrix::api
