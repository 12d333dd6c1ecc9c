// SPDX-License-Identifier: MIT
#include "picture/HostImage.h"

#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace host {
namespace {

constexpr std::uint32_t kHeaderBytes = 40;

}  // namespace

HostImage::HostImage(int width, int height, int bitCount) {
    const std::uint32_t colours = bitCount <= 8 ? 1u << bitCount : 0;
    const std::size_t pixelBytes = RowBytesOf(bitCount, width) * static_cast<std::size_t>(height);
    handle = GlobalAlloc(GHND, kHeaderBytes + 4 * colours + pixelBytes);
    auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
    if (block == nullptr) throw std::bad_alloc();
    record = {reinterpret_cast<BITMAPINFOHEADER*>(block), reinterpret_cast<RGBQUAD*>(block + kHeaderBytes),
              block + kHeaderBytes + 4 * colours};
    BITMAPINFOHEADER& header = *record.header;
    header.biSize = kHeaderBytes;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bitCount);
    header.biSizeImage = static_cast<std::uint32_t>(pixelBytes);
    header.biClrUsed = colours;
    for (std::uint32_t i = 0; i < colours; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 255 / (colours - 1));
        record.palette[i] = {level, level, level, 0};
    }
}

HostImage::HostImage(const DibRecord& result) : handle(GlobalHandle(result.header)), record(result) {}

HostImage::HostImage(HostImage&& other) noexcept
    : handle(std::exchange(other.handle, nullptr)), record(std::exchange(other.record, {})) {}

HostImage& HostImage::operator=(HostImage&& other) noexcept {
    std::swap(handle, other.handle);
    std::swap(record, other.record);
    return *this;
}

HostImage::~HostImage() {
    if (handle != nullptr) GlobalFree(handle);
}

HostImage HostImage::Copy() const {
    HostImage copy(Width(), Height(), BitCount());
    std::memcpy(copy.record.bits, record.bits, copy.record.header->biSizeImage);
    return copy;
}

DibRecord HostImage::Release() {
    handle = nullptr;
    return std::exchange(record, {});
}

HostImage ToGray(HostImage image) {
    if (image.BitCount() == 8) return image;
    HostImage gray(image.Width(), image.Height(), 8);
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* from = image.TopRow(y);
        std::uint8_t* to = gray.TopRow(y);
        if (image.BitCount() == 1) {
            for (int x = 0; x < image.Width(); ++x) to[x] = from[x / 8] >> (7 - x % 8) & 1 ? 255 : 0;
        } else {
            for (int x = 0; x < image.Width(); ++x, from += 3) {
                to[x] = static_cast<std::uint8_t>(0.299 * from[2] + 0.587 * from[1] + 0.114 * from[0] + 0.5);
            }
        }
    }
    return gray;
}

HostImage ToColour(const HostImage& image) {
    if (image.BitCount() == 24) return image.Copy();
    HostImage colour(image.Width(), image.Height(), 24);
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* from = image.TopRow(y);
        std::uint8_t* to = colour.TopRow(y);
        for (int x = 0; x < image.Width(); ++x, to += 3) {
            const std::uint8_t level = image.BitCount() == 8            ? from[x]
                                       : from[x / 8] >> (7 - x % 8) & 1 ? 255
                                                                        : 0;
            std::memset(to, level, 3);
        }
    }
    return colour;
}

std::int64_t CountBlack(const HostImage& image) {
    std::int64_t white = 0;
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* row = image.TopRow(y);
        for (int i = 0; i < image.Width() / 8; ++i) white += std::popcount(row[i]);
        const int rest = image.Width() % 8;
        if (rest != 0) white += std::popcount(static_cast<unsigned>(row[image.Width() / 8] >> (8 - rest)));
    }
    return std::int64_t{image.Width()} * image.Height() - white;
}

double BlackShare(const HostImage& image) {
    return static_cast<double>(CountBlack(image)) / (static_cast<double>(image.Width()) * image.Height());
}

}  // namespace host
