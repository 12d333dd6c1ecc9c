// SPDX-License-Identifier: MIT
#include "support/HostImage.h"

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
    header.biXPelsPerMeter = 11811;
    header.biYPelsPerMeter = 11811;
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

HostImage HostImage::FromRows(const std::vector<std::string>& rows) {
    HostImage image(rows.empty() ? 0 : static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 1);
    for (int y = 0; y < image.Height(); ++y) {
        for (int x = 0; x < image.Width(); ++x) image.SetBit(x, y, rows[y][x] != '#');
    }
    return image;
}

HostImage HostImage::Random(int width, int height, int bitCount, std::mt19937& random, double blackShare) {
    HostImage image(width, height, bitCount);
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::uint32_t i = 0; i < image.Header().biSizeImage; ++i) {
        image.record.bits[i] = static_cast<std::uint8_t>(byte(random));
    }
    if (bitCount == 1) {
        std::bernoulli_distribution black(blackShare);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) image.SetBit(x, y, !black(random));
        }
    }
    return image;
}

std::size_t HostImage::RowBytes() const {
    return RowBytesOf(record.header->biBitCount, record.header->biWidth);
}

void HostImage::SetBit(int x, int y, bool on) const {
    const auto mask = static_cast<std::uint8_t>(0x80 >> x % 8);
    std::uint8_t& byte = Row(y)[x / 8];
    byte = static_cast<std::uint8_t>(on ? byte | mask : byte & ~mask);
}

std::vector<std::uint8_t> HostImage::Bytes() const {
    const auto* start = reinterpret_cast<const std::uint8_t*>(record.header);
    const std::uint8_t* end = record.bits + record.header->biSizeImage;
    return std::vector<std::uint8_t>(start, end);
}

std::vector<std::string> HostImage::Rows() const {
    std::vector<std::string> rows;
    for (int y = 0; y < Height(); ++y) {
        rows.emplace_back();
        for (int x = 0; x < Width(); ++x) rows.back() += Bit(x, y) ? '.' : '#';
    }
    return rows;
}

}  // namespace tavrix::test
