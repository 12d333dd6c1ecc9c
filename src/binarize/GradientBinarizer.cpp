// SPDX-License-Identifier: MIT
#include "binarize/GradientBinarizer.h"

#include <cstring>
#include <vector>

#include "binarize/GradientKernels.h"

namespace tavrix {
namespace {

// Rows with a pixel 0 at either end. Row y is there until row y + size comes; row -1 is all 0.
class PaddedRing {
  public:
    PaddedRing(int ringSize, int width)
        : size(ringSize), stride(static_cast<std::size_t>(width) + 2), values(size * stride) {}
    std::uint8_t* Row(int y) {
        return values.data() + static_cast<std::size_t>((y + size) % size) * stride + 1;
    }

  private:
    int size;
    std::size_t stride;
    std::vector<std::uint8_t> values;
};

}  // namespace

bool GradientBinarizer::Binarize() {
    ApplyMarkerPalette();
    const auto& kernels = platform::KernelsOf<GradientKernels>();
    const auto columns = static_cast<std::size_t>(width);
    PaddedRing values(4, width), gradients(3, width);
    const auto load = [&](int y) {
        if (y < height) {
            std::memcpy(values.Row(y), image->Row(y), columns);
        } else {
            std::memset(values.Row(y), 0, columns);
        }
    };
    load(0);
    // Magnitudes run a row ahead of the result, values two rows.
    for (int y = -1; y < height; ++y) {
        load(y + 2);
        if (y + 1 < height) {
            kernels.gradientRow(values.Row(y), values.Row(y + 1), values.Row(y + 2), width,
                                gradients.Row(y + 1));
        } else {
            std::memset(gradients.Row(y + 1), 0, columns);
        }
        if (y == 0) {
            std::memset(image->Row(0), 0, columns);
        } else if (y > 0) {
            kernels.edgeLevelRow(values.Row(y), values.Row(y - 1), gradients.Row(y - 1), gradients.Row(y),
                                 gradients.Row(y + 1), width, image->Row(y));
        }
    }
    return true;
}

}  // namespace tavrix
