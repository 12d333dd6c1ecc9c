// SPDX-License-Identifier: MIT
#include "geometry/WhiteSurround.h"

#include <cstring>
#include <vector>

#include "geometry/TurnKernels.h"
#include "image/DibImage.h"
#include "image/HostBlock.h"

namespace tavrix {
namespace {

constexpr std::uint8_t kWhiteByte = 0xFF;

}  // namespace

bool SurroundWithWhite(const DibImage& image, int margin, DibRecord* result) {
    const int width = image.Width() + 2 * margin, height = image.Height() + 2 * margin;
    const std::size_t rowBytes = RowBytesOf(1, width);
    const std::size_t pixels = rowBytes * static_cast<std::size_t>(height);
    // A row of the image after one white byte, of which the bits before the image's first bit are taken.
    const std::size_t imageBytes = (static_cast<std::size_t>(image.Width()) + 7) / 8;
    std::vector<std::uint8_t> row(1 + imageBytes, kWhiteByte);
    const int lead = margin % 8, count = lead + image.Width();

    const DibRecord block = NewHostBlock(1, pixels);
    if (block.header == nullptr) return false;
    BITMAPINFOHEADER& header = *block.header;
    header.biSize = kHeaderBytes;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = 1;
    header.biSizeImage = static_cast<std::uint32_t>(pixels);
    header.biXPelsPerMeter = image.header->biXPelsPerMeter;
    header.biYPelsPerMeter = image.header->biYPelsPerMeter;
    header.biClrUsed = ColourCountOf(1);
    block.palette[1] = {255, 255, 255, 0};

    std::memset(block.bits, kWhiteByte, pixels);
    const auto copyBits = platform::KernelsOf<TurnKernels>().copyBits;
    for (int y = 0; y < image.Height() && image.Width() > 0; ++y) {
        std::memcpy(row.data() + 1, image.Row(y), imageBytes);
        std::uint8_t* target = block.bits + rowBytes * (y + margin) + margin / 8;
        copyBits(row.data(), 8 - lead, count, target);
        if (count % 8 != 0) target[count / 8] |= static_cast<std::uint8_t>(kWhiteByte >> count % 8);
    }
    *result = block;
    return true;
}

}  // namespace tavrix
