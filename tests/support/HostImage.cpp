// SPDX-License-Identifier: MIT
#include "support/HostImage.h"

#include <cstring>
#include <random>

#include "image/DibLayout.h"

namespace tavrix::test {

HostImage::HostImage(int width, int height, int bitCount) {
    const std::size_t table = TableBytesOf(bitCount);
    const std::size_t pixels = RowBytesOf(bitCount, width) * height;
    handle = GlobalAlloc(GHND, kHeaderBytes + table + pixels);
    auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
    record = {reinterpret_cast<BITMAPINFOHEADER*>(block), reinterpret_cast<RGBQUAD*>(block + kHeaderBytes),
              block + kHeaderBytes + table};
    BITMAPINFOHEADER& header = *record.header;
    header.biSize = kHeaderBytes;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bitCount);
    header.biSizeImage = static_cast<std::uint32_t>(pixels);
    header.biClrUsed = ColourCountOf(bitCount);
    for (std::uint32_t i = 0; i < header.biClrUsed; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 255 / (header.biClrUsed - 1));
        record.palette[i] = {level, level, level, 0};
    }
}

HostImage::HostImage(const DibRecord& result) : handle(GlobalHandle(result.header)), record(result) {
    GlobalLock(handle);
}

HostImage::HostImage(HostImage&& other) noexcept : handle(other.handle), record(other.record) {
    other.handle = nullptr;
}

HostImage::~HostImage() {
    if (handle != nullptr) GlobalFree(handle);
}

HostImage HostImage::Drawn(int width, int height, int bitCount, unsigned seed) {
    HostImage image(width, height, bitCount);
    std::mt19937 random(seed);
    const int pitch = 7 + static_cast<int>(seed % 20);  // pixels
    const unsigned noise = seed % 4 == 3 ? 200 : 20;    // levels
    const std::size_t rowBytes = RowBytesOf(bitCount, width);
    std::memset(image.record.bits, 0xA5, image.Header().biSizeImage);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = image.record.bits + rowBytes * y;
        for (int x = 0; x < width; ++x) {
            const int column = x % pitch;
            const bool inText = x > 5 && x < width - 5 && y / pitch % 2 == 1;
            const bool letter = inText && column < pitch - 2 && (column < 2 || y % 5 < 2);
            const bool mark = x > width * 2 / 3 && x < width - 8 && y > height * 3 / 4 && y < height - 2;
            const bool speck = (x * 31 + y * 17) % 211 == 0;
            const auto level =
                static_cast<std::uint8_t>((letter || mark || speck ? 40 : 220) + random() % noise);
            if (bitCount == 1) {
                const auto bit = static_cast<std::uint8_t>(0x80 >> x % 8);
                row[x / 8] = static_cast<std::uint8_t>(level < 128 ? row[x / 8] & ~bit : row[x / 8] | bit);
            } else {
                std::memset(row + bitCount / 8 * x, level, static_cast<std::size_t>(bitCount / 8));
            }
        }
    }
    return image;
}

std::vector<std::uint8_t> HostImage::Bytes() const {
    const auto* start = reinterpret_cast<const std::uint8_t*>(record.header);
    return {start, start + GlobalSize(handle)};
}

}  // namespace tavrix::test
