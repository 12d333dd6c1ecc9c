// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

#include "binarize/MaskKernels.h"
#include "image/Plane.h"

namespace tavrix {

// The foreground of a page, written out row by row as it is needed: where a plane's bytes are above a limit,
// or where they are not.
class Mask {
  public:
    static Mask From(const ConstPlane& edges, int threshold) { return {edges, threshold - 1, true}; }
    static Mask UpTo(const ConstPlane& gray, int threshold) { return {gray, threshold, false}; }

    // The plane's reach of row y: 0 is foreground, 255 background.
    void WriteRow(int y, std::uint8_t* row) const { write(plane.Row(y), plane.columns, limit, row); }

    ConstPlane plane;

  private:
    Mask(const ConstPlane& maskedPlane, int maskLimit, bool isAbove)
        : plane(maskedPlane),
          limit(std::clamp(maskLimit, -1, 255)),
          write(isAbove ? platform::KernelsOf<MaskKernels>().maskUpTo
                        : platform::KernelsOf<MaskKernels>().maskAbove) {}

    int limit;
    decltype(MaskKernels::maskUpTo) write;
};

}  // namespace tavrix
