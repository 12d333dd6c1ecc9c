// SPDX-License-Identifier: MIT
#include "picture/HostImage.h"

#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include "picture/EveryProcessor.h"
#include "picture/GrayRow.h"

namespace host {
namespace {

constexpr std::uint32_t kHeaderBytes = 40;

}  // namespace

HostImage::HostImage(int width, int height, int bitCount) : HostImage(width, height, bitCount, GHND) {}

HostImage::HostImage(int width, int height, int bitCount, unsigned kindOfMemory) {
    const std::uint32_t colours = bitCount <= 8 ? 1u << bitCount : 0;
    const std::size_t pixelBytes = RowBytesOf(bitCount, width) * static_cast<std::size_t>(height);
    handle = GlobalAlloc(kindOfMemory, kHeaderBytes + 4 * colours + pixelBytes);
    auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
    if (block == nullptr) throw std::bad_alloc();
    record = {reinterpret_cast<BITMAPINFOHEADER*>(block), reinterpret_cast<RGBQUAD*>(block + kHeaderBytes),
              block + kHeaderBytes + 4 * colours};
    BITMAPINFOHEADER& header = *record.header;
    header = {};
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

HostImage HostImage::Unset(int width, int height, int bitCount) {
    HostImage image(width, height, bitCount, GMEM_MOVEABLE);
    const std::size_t used = (static_cast<std::size_t>(width) * bitCount + 7) / 8;
    const std::size_t rest = image.RowBytes() - used;
    for (int y = 0; y < height && rest != 0; ++y) std::memset(image.TopRow(y) + used, 0, rest);
    return image;
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
    HostImage copy = Unset(Width(), Height(), BitCount());
    std::memcpy(copy.record.bits, record.bits, copy.record.header->biSizeImage);
    return copy;
}

DibRecord HostImage::Release() {
    handle = nullptr;
    return std::exchange(record, {});
}

HostImage ToGray(const HostImage& image) {
    if (image.BitCount() == 8) return image.Copy();
    HostImage gray = HostImage::Unset(image.Width(), image.Height(), 8);
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* from = image.TopRow(y);
        std::uint8_t* to = gray.TopRow(y);
        if (image.BitCount() == 24) {
            ToGrayRow(from, image.Width(), to);
        } else {
            for (int x = 0; x < image.Width(); ++x) to[x] = from[x / 8] >> (7 - x % 8) & 1 ? 255 : 0;
        }
    }
    return gray;
}

HostImage ToGray(HostImage&& image) {
    return image.BitCount() == 8 ? std::move(image) : ToGray(std::as_const(image));
}

HostImage ToColour(const HostImage& image) {
    if (image.BitCount() == 24) return image.Copy();
    HostImage colour = HostImage::Unset(image.Width(), image.Height(), 24);
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

HOST_FOR_EVERY_PROCESSOR std::int64_t CountBlack(const HostImage& image) {
    std::int64_t white = 0;
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* row = image.TopRow(y);
        int i = 0;
        for (; i + 8 <= image.Width() / 8; i += 8) {
            std::uint64_t eight;
            std::memcpy(&eight, row + i, sizeof eight);
            white += std::popcount(eight);
        }
        for (; i < image.Width() / 8; ++i) white += std::popcount(row[i]);
        const int rest = image.Width() % 8;
        if (rest != 0) white += std::popcount(static_cast<unsigned>(row[image.Width() / 8] >> (8 - rest)));
    }
    return std::int64_t{image.Width()} * image.Height() - white;
}

double BlackShare(const HostImage& image) {
    return static_cast<double>(CountBlack(image)) / (static_cast<double>(image.Width()) * image.Height());
}

}  // namespace host
