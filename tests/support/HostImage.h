// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tavrix/tavrix.h"

namespace tavrix::test {

// A packed image in a movable block of global memory, as a host has it. The block stays locked once
// while the object lives, so that record and pixels are at hand; the object frees it.
class HostImage {
  public:
    // Gray ramp or black and white table; pixels 0.
    HostImage(int width, int height, int bitCount);
    // Takes over a result block of the library.
    explicit HostImage(const DibRecord& result);
    // A 1-bit image from text, first string = stored row 0: '#' is black, anything else white.
    static HostImage FromRows(const std::vector<std::string>& rows);
    // Every pixel byte random (padding of rows included), or, for 1 bit, black with the given share.
    static HostImage Random(int width, int height, int bitCount, std::mt19937& random,
                            double blackShare = 0.5);
    ~HostImage();
    HostImage(HostImage&& other) noexcept;
    HostImage& operator=(HostImage&&) = delete;
    HostImage(const HostImage&) = delete;

    HGLOBAL Handle() const { return handle; }
    const DibRecord& Record() const { return record; }
    BITMAPINFOHEADER& Header() const { return *record.header; }
    int Width() const { return static_cast<int>(record.header->biWidth); }
    int Height() const { return static_cast<int>(record.header->biHeight); }
    std::size_t RowBytes() const;
    std::uint8_t* Row(int y) const { return record.bits + RowBytes() * y; }
    int Bit(int x, int y) const { return Row(y)[x / 8] >> (7 - x % 8) & 1; }
    void SetBit(int x, int y, bool on) const;
    // Header, colour table and pixel rows.
    std::vector<std::uint8_t> Bytes() const;
    // 1-bit images: the opposite of FromRows, '#' black, '.' white.
    std::vector<std::string> Rows() const;

  private:
    HGLOBAL handle;
    DibRecord record;
};

}  // namespace tavrix::test
