// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavrix/tavrix.h"

namespace host {

// Sides that the library takes, in pixels.
inline constexpr std::int64_t kMaxSide = 32767;

// A packed picture of 1, 8 or 24 bits in a movable block of global memory, as the library's functions
// take and give it. The object owns the block. Throws std::bad_alloc when there is no memory.
class HostImage {
  public:
    HostImage() = default;
    // A black picture with a black and white or gray colour table and no resolution.
    HostImage(int width, int height, int bitCount);
    // One whose pixels are still to be set: only the ends of its rows are cleared.
    static HostImage Unset(int width, int height, int bitCount);
    // Takes over a block that the library handed out.
    explicit HostImage(const DibRecord& result);
    HostImage(HostImage&& other) noexcept;
    HostImage& operator=(HostImage&& other) noexcept;
    HostImage(const HostImage&) = delete;
    HostImage& operator=(const HostImage&) = delete;
    ~HostImage();

    HostImage Copy() const;
    // Gives the block away: whoever takes the record frees it.
    DibRecord Release();

    HGLOBAL Handle() const { return handle; }
    const DibRecord& Record() const { return record; }
    int Width() const { return static_cast<int>(record.header->biWidth); }
    int Height() const { return static_cast<int>(record.header->biHeight); }
    int BitCount() const { return record.header->biBitCount; }
    std::size_t RowBytes() const { return RowBytesOf(BitCount(), Width()); }
    // Row y as people see it: 0 is the top one. Stored rows run the other way.
    std::uint8_t* TopRow(int y) const { return record.bits + RowBytes() * (Height() - 1 - y); }

    static std::size_t RowBytesOf(int bitCount, std::int64_t width) {
        return static_cast<std::size_t>((bitCount * width + 31) / 32 * 4);
    }

  private:
    HostImage(int width, int height, int bitCount, unsigned kindOfMemory);

    HGLOBAL handle = nullptr;
    DibRecord record = {};
};

// 1 bit becomes 0 and 255, colour its luminance (0.299, 0.587, 0.114), as the library weighs it.
HostImage ToGray(const HostImage& image);
HostImage ToGray(HostImage&& image);
HostImage ToColour(const HostImage& image);

// Black pixels of a 1-bit picture.
std::int64_t CountBlack(const HostImage& image);
// Their share of all pixels, 0 to 1.
double BlackShare(const HostImage& image);

}  // namespace host
