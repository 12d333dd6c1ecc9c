// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"

namespace tavrix {

// What the component tools keep of the image that they are built around.
struct ImageFrame {
    explicit ImageFrame(DibImage* source)
        : image(source),
          width(source->Width()),
          rowBytes(static_cast<std::int32_t>(source->RowBytes())),
          height(source->Height()),
          bitCount(source->header->biBitCount) {}

    DibImage* image;  // borrowed
    std::int32_t width;
    std::int32_t rowBytes;
    std::int32_t height;
    std::int32_t bitCount;
};

}  // namespace tavrix
