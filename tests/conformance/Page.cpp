// SPDX-License-Identifier: MIT
#include "Page.h"

#include <algorithm>
#include <cstring>

namespace tavrix::conformance {
namespace {

constexpr int kPaddingByte = 0xA5;
constexpr std::uint8_t kMiddleGray = 128;
constexpr std::size_t kHeaderBytes = 40;
constexpr std::int32_t kPixelsPerMetre = 11811;  // 300 dots per inch

std::size_t RowBytesOf(int bitCount, int width) {
    return (static_cast<std::size_t>(bitCount) * static_cast<std::size_t>(width) + 31) / 32 * 4;
}

void PackRow(const std::uint8_t* levels, int width, int bitCount, std::uint8_t* row) {
    for (int x = 0; x < width; ++x) {
        const int level = levels[x];
        if (bitCount == 1) {
            const auto mask = static_cast<std::uint8_t>(0x80 >> x % 8);
            std::uint8_t& byte = row[x / 8];
            byte = static_cast<std::uint8_t>(level < kMiddleGray ? byte & ~mask : byte | mask);
        } else {
            row[3 * x] = static_cast<std::uint8_t>(level / 2 + x % 64);
            row[3 * x + 1] = static_cast<std::uint8_t>(level);
            row[3 * x + 2] = static_cast<std::uint8_t>(255 - (255 - level) * 3 / 4);
        }
    }
}

}  // namespace

Page::Page(int pageWidth, int pageHeight, int paper)
    : width(pageWidth),
      height(pageHeight),
      rowBytes(RowBytesOf(8, pageWidth)),
      bytes(rowBytes * static_cast<std::size_t>(pageHeight), static_cast<std::uint8_t>(kPaddingByte)) {
    Fill(0, 0, width, height, paper);
}

void Page::Fill(int x, int y, int w, int h, int tone, int pitch) {
    const auto skipped = [pitch](int from) { return from < 0 ? (-from + pitch - 1) / pitch * pitch : 0; };
    for (int j = y + skipped(y); j < std::min(y + h, height); j += pitch) {
        for (int i = x + skipped(x); i < std::min(x + w, width); i += pitch) {
            Row(j)[i] = static_cast<std::uint8_t>(tone);
        }
    }
}

void Page::AddNoise(Draws& draw, int amount) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t& pixel = Row(y)[x];
            pixel = static_cast<std::uint8_t>(std::clamp(pixel + draw.Between(-amount, amount), 0, 255));
        }
    }
}

const Page& Sheet::Drawn() const {
    if (page == nullptr) page = std::make_unique<Page>(draw());
    return *page;
}

Picture::Picture(const Page& page, int bitCount) {
    const std::size_t rowBytes = RowBytesOf(bitCount, page.width);
    const std::uint32_t colours = bitCount <= 8 ? 1u << bitCount : 0;
    const std::size_t pixelBytes = rowBytes * static_cast<std::size_t>(page.height);
    handle = GlobalAlloc(GHND, kHeaderBytes + 4 * colours + pixelBytes);
    auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
    record.header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    record.palette = reinterpret_cast<RGBQUAD*>(block + kHeaderBytes);
    record.bits = block + kHeaderBytes + 4 * colours;
    BITMAPINFOHEADER& header = *record.header;
    header.biSize = kHeaderBytes;
    header.biWidth = page.width;
    header.biHeight = page.height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bitCount);
    header.biSizeImage = static_cast<std::uint32_t>(pixelBytes);
    header.biXPelsPerMeter = kPixelsPerMetre;
    header.biYPelsPerMeter = kPixelsPerMetre;
    header.biClrUsed = colours;
    for (std::uint32_t i = 0; i < colours; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 255 / (colours - 1));
        record.palette[i] = {level, level, level, 0};
    }
    if (bitCount == 8) {
        std::copy(page.bytes.begin(), page.bytes.end(), record.bits);
        return;
    }
    std::memset(record.bits, kPaddingByte, pixelBytes);
    for (int y = 0; y < page.height; ++y) {
        PackRow(page.Row(y), page.width, bitCount, record.bits + rowBytes * static_cast<std::size_t>(y));
    }
}

Picture::~Picture() {
    if (handle != nullptr) GlobalFree(handle);
}

unsigned LocksOf(HGLOBAL handle) {
    return GlobalFlags(handle) & GMEM_LOCKCOUNT;
}

}  // namespace tavrix::conformance
