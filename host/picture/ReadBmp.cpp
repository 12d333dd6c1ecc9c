// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <utility>
#include <vector>

#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::uint32_t kCoreHeaderBytes = 12;
constexpr std::uint32_t kInfoHeaderBytes = 40;
enum Compression { kPlain = 0, kRunLength8 = 1, kRunLength4 = 2, kBitFields = 3, kAlphaBitFields = 6 };

struct Layout {
    std::int64_t width, height;  // height is negative when the top row comes first
    int bits;
    std::uint32_t compression;
    std::size_t pixels;  // where the rows start
    std::vector<RGBQUAD> colours;
    std::array<std::uint32_t, 3> masks;  // red, green, blue of 16 and 32 bits
    Resolution resolution;
};

Layout ReadLayout(Bytes bytes) {
    const auto number = [bytes](std::size_t at, std::size_t size) {
        if (at + size > bytes.size()) FailReading("BMP: the file is cut short");
        return LittleEndian(bytes, at, size);
    };
    Layout layout = {};
    layout.pixels = number(10, 4);
    const std::uint32_t headerBytes = number(kFileHeaderBytes, 4);
    const bool isCore = headerBytes == kCoreHeaderBytes;
    if (!isCore && headerBytes < kInfoHeaderBytes) FailReading("BMP: the header is damaged");
    const std::size_t header = kFileHeaderBytes;
    std::uint32_t colourCount = 0;
    if (isCore) {
        layout.width = number(header + 4, 2);
        layout.height = number(header + 6, 2);
        layout.bits = static_cast<int>(number(header + 10, 2));
    } else {
        layout.width = static_cast<std::int32_t>(number(header + 4, 4));
        layout.height = static_cast<std::int32_t>(number(header + 8, 4));
        layout.bits = static_cast<int>(number(header + 14, 2));
        layout.compression = number(header + 16, 4);
        layout.resolution = {static_cast<std::int32_t>(number(header + 24, 4)) * kMetresPerInch,
                             static_cast<std::int32_t>(number(header + 28, 4)) * kMetresPerInch};
        colourCount = number(header + 32, 4);
    }
    std::size_t table = header + headerBytes;
    if (layout.bits == 16) layout.masks = {0x7C00, 0x03E0, 0x001F};
    if (layout.bits == 32) layout.masks = {0xFF0000, 0x00FF00, 0x0000FF};
    if (layout.compression == kBitFields || layout.compression == kAlphaBitFields) {
        for (std::size_t k = 0; k < 3; ++k) layout.masks[k] = number(header + kInfoHeaderBytes + 4 * k, 4);
        if (headerBytes == kInfoHeaderBytes) table += layout.compression == kBitFields ? 12 : 16;
    }
    if (layout.bits <= 8) {
        const std::uint32_t room = 1u << layout.bits;
        if (colourCount == 0 || colourCount > room) colourCount = room;
        layout.colours.resize(room);  // indices beyond the table are black
        const std::size_t entryBytes = isCore ? 3 : 4;
        for (std::size_t i = 0; i < colourCount; ++i) {
            const std::size_t at = table + i * entryBytes;
            if (at + entryBytes > layout.pixels && i > 0) break;
            layout.colours[i] = {static_cast<std::uint8_t>(number(at, 1)),
                                 static_cast<std::uint8_t>(number(at + 1, 1)),
                                 static_cast<std::uint8_t>(number(at + 2, 1)), 0};
        }
    }
    return layout;
}

void CheckKind(const Layout& layout) {
    constexpr std::array kDepths = {1, 2, 4, 8, 16, 24, 32};
    const bool isRunLength = (layout.compression == kRunLength8 && layout.bits == 8) ||
                             (layout.compression == kRunLength4 && layout.bits == 4);
    const bool isMasked = (layout.compression == kBitFields || layout.compression == kAlphaBitFields) &&
                          (layout.bits == 16 || layout.bits == 32);
    if (std::find(kDepths.begin(), kDepths.end(), layout.bits) == kDepths.end() ||
        (layout.compression != kPlain && !isRunLength && !isMasked)) {
        FailReading("BMP: this kind of compression or depth is not supported");
    }
}

// Calls putPixel(column, stored row, index) for every pixel that a run-length coded picture does not skip.
template <typename Put>
void DecodeRuns(Bytes bytes, const Layout& layout, const Put& putPixel) {
    enum Escape { kEndOfRow = 0, kEndOfPicture = 1, kSkip = 2 };
    const auto width = static_cast<std::size_t>(layout.width);
    const auto height = static_cast<std::size_t>(layout.height);
    std::size_t x = 0;
    std::size_t y = 0;
    std::size_t at = layout.pixels;
    const auto byte = [&]() -> unsigned {
        if (at >= bytes.size()) FailReading("BMP: the file is cut short");
        return bytes[at++];
    };
    const auto put = [&](unsigned index) {
        if (x < width && y < height) putPixel(x++, y, index);
    };
    // A byte holds one index, or two of four bits.
    const auto indexOf = [&](unsigned value, unsigned i) {
        return layout.bits == 8 ? value : i % 2 == 0 ? value >> 4 : value & 15;
    };
    while (y < height) {
        const unsigned count = byte();
        const unsigned value = byte();
        if (count > 0) {
            for (unsigned i = 0; i < count; ++i) put(indexOf(value, i));
        } else if (value == kEndOfRow) {
            x = 0;
            ++y;
        } else if (value == kEndOfPicture) {
            break;
        } else if (value == kSkip) {
            x += byte();
            y += byte();
        } else {
            const std::size_t start = at;
            unsigned pair = 0;
            for (unsigned i = 0; i < value; ++i) {
                if (layout.bits == 8 || i % 2 == 0) pair = byte();
                put(indexOf(pair, i));
            }
            at += (at - start) % 2;  // literal pixels fill whole words
        }
    }
}

std::uint8_t MaskedSample(std::uint32_t pixel, std::uint32_t mask) {
    if (mask == 0) return 0;
    const std::uint64_t maximum = mask >> std::countr_zero(mask);
    return static_cast<std::uint8_t>(
        (((pixel & mask) >> std::countr_zero(mask)) * std::uint64_t{255} + maximum / 2) / maximum);
}

// A pixel of a row that is stored as it is.
RGBQUAD ColourOf(const std::uint8_t* row, std::size_t x, const Layout& layout) {
    const auto bits = static_cast<std::size_t>(layout.bits);
    if (bits == 8) return layout.colours[row[x]];
    if (bits < 8) {
        const unsigned index = row[x * bits / 8] >> (8 - bits - x * bits % 8);
        return layout.colours[index & (layout.colours.size() - 1)];
    }
    if (bits == 24) return {row[3 * x], row[3 * x + 1], row[3 * x + 2], 0};
    const std::uint32_t pixel = LittleEndian({row, (x + 1) * bits / 8}, x * bits / 8, bits / 8);
    return {MaskedSample(pixel, layout.masks[2]), MaskedSample(pixel, layout.masks[1]),
            MaskedSample(pixel, layout.masks[0]), 0};
}

// to: a row of an image of 8 or 24 bits.
void PutColour(std::uint8_t* to, std::size_t x, const RGBQUAD& colour, bool isGray) {
    if (isGray) {
        to[x] = colour.rgbRed;
    } else {
        to[3 * x] = colour.rgbBlue;
        to[3 * x + 1] = colour.rgbGreen;
        to[3 * x + 2] = colour.rgbRed;
    }
}

}  // namespace

Picture ReadBmp(Bytes bytes, std::int64_t maxPixels) {
    Layout layout = ReadLayout(bytes);
    CheckKind(layout);
    const bool isTopDown = layout.height < 0;
    layout.height = std::abs(layout.height);
    CheckSize(layout.width, layout.height, maxPixels);
    const bool isRunLength = layout.compression == kRunLength8 || layout.compression == kRunLength4;
    const auto width = static_cast<std::size_t>(layout.width);
    const auto height = static_cast<std::size_t>(layout.height);
    const std::size_t rowBytes = HostImage::RowBytesOf(layout.bits, layout.width);
    const bool isCutShort = layout.pixels > bytes.size() || rowBytes * height > bytes.size() - layout.pixels;
    if (!isRunLength && isCutShort) FailReading("BMP: the file is cut short");

    const auto& colours = layout.colours;
    const bool isGray = !colours.empty() && std::all_of(colours.begin(), colours.end(), [](const RGBQUAD& c) {
        return c.rgbRed == c.rgbGreen && c.rgbRed == c.rgbBlue;
    });
    const bool isBlackWhite = isGray && layout.bits == 1 && colours[0].rgbRed + colours[1].rgbRed == 255 &&
                              colours[0].rgbRed % 255 == 0;
    Picture picture{HostImage(static_cast<int>(width), static_cast<int>(height),
                              isBlackWhite ? 1
                              : isGray     ? 8
                                           : 24),
                    layout.resolution};
    const auto rowOf = [&](std::size_t stored) {
        return picture.image.TopRow(static_cast<int>(isTopDown ? stored : height - 1 - stored));
    };
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* from = isRunLength ? nullptr : bytes.data() + layout.pixels + y * rowBytes;
        std::uint8_t* to = rowOf(y);
        if (isBlackWhite) {
            const int flip = colours[0].rgbRed;
            for (std::size_t i = 0; i < (width + 7) / 8; ++i)
                to[i] = static_cast<std::uint8_t>(from[i] ^ flip);
            continue;
        }
        // Pixels that no run sets are of the first colour.
        for (std::size_t x = 0; x < width; ++x)
            PutColour(to, x, isRunLength ? colours[0] : ColourOf(from, x, layout), isGray);
    }
    if (isRunLength) {
        DecodeRuns(bytes, layout, [&](std::size_t x, std::size_t y, unsigned index) {
            PutColour(rowOf(y), x, colours[index], isGray);
        });
    }
    return picture;
}

}  // namespace host
