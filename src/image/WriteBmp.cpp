// SPDX-License-Identifier: MIT
#include "image/WriteBmp.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "image/DibLayout.h"
#include "platform/Message.h"
#include "platform/OutputFile.h"

namespace tavrix {
namespace {

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::uint32_t kMaxColours = 256;

// The packed little-endian file header.
std::array<std::uint8_t, kFileHeaderBytes> FileHeader(std::uint32_t fileBytes, std::uint32_t pixelOffset) {
    std::array<std::uint8_t, kFileHeaderBytes> bytes{'B', 'M'};
    for (int i = 0; i < 4; ++i) {
        bytes[2 + i] = static_cast<std::uint8_t>(fileBytes >> 8 * i);
        bytes[10 + i] = static_cast<std::uint8_t>(pixelOffset >> 8 * i);
    }
    return bytes;
}

}  // namespace

bool WriteBmpFile(const char* path, const BITMAPINFOHEADER& header, const RGBQUAD* palette,
                  const std::uint8_t* bits) {
    platform::OutputFile file(path);
    if (!file.IsOpen()) return false;
    const bool hasTable = header.biClrUsed <= kMaxColours;
    const std::size_t table = hasTable ? 4 * std::size_t{header.biClrUsed} : 0;
    const std::size_t pixels = RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight;
    const std::size_t offset = kFileHeaderBytes + kHeaderBytes + table;
    const auto fileHeader =
        FileHeader(static_cast<std::uint32_t>(offset + pixels), static_cast<std::uint32_t>(offset));
    std::array<RGBQUAD, kMaxColours> colours{};
    if (table != 0) std::memcpy(colours.data(), palette, table);
    for (RGBQUAD& colour : colours) colour.rgbReserved = 0;

    const bool written = file.Write(fileHeader.data(), fileHeader.size()) &&
                         file.Write(&header, kHeaderBytes) && file.Write(colours.data(), table) &&
                         file.Write(bits, pixels);
    if (!written) platform::ShowMessage(platform::kBmpWriteError);
    return written;
}

}  // namespace tavrix
