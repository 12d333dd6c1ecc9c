// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
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
    // Lines of letters, a large mark and specks; their size and the noise over them follow the seed.
    static HostImage Drawn(int width, int height, int bitCount, unsigned seed = 0);
    ~HostImage();
    HostImage(HostImage&& other) noexcept;
    HostImage& operator=(HostImage&&) = delete;
    HostImage(const HostImage&) = delete;

    HGLOBAL Handle() const { return handle; }
    const DibRecord& Record() const { return record; }
    BITMAPINFOHEADER& Header() const { return *record.header; }
    // The whole block: header, colour table and pixel rows.
    std::vector<std::uint8_t> Bytes() const;

  private:
    HGLOBAL handle;
    DibRecord record;
};

}  // namespace tavrix::test
