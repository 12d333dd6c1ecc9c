// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "image/DibImage.h"

namespace tavrix {

// Base of the binarization methods: the attached 8-bit image's geometry, its intensity table, its
// histogram, and the thresholds that several methods share. A method object lives for one call.
class Binarizer {
  public:
    // Block-wise; methods without a block variant do nothing and return true.
    virtual bool BinarizeBlock() = 0;
    virtual ~Binarizer() = default;
    // The whole image; false when the method cannot run on it.
    virtual bool Binarize() = 0;
    Binarizer(const Binarizer&) = delete;
    Binarizer& operator=(const Binarizer&) = delete;

    // False, with nothing changed, when image is null.
    bool Attach(DibImage* image);
    // Counts the pixels of every step-th column and row into histogram.
    void ComputeHistogram(int step);
    // Otsu (1979) over the whole image: the first k with the largest between-class variance; 120 for an
    // image without pixels. Recomputes histogram.
    std::int32_t ImageOtsuThreshold();
    // Isodata (Ridler and Calvard 1978) of 256 counters; 0 for an empty histogram.
    static std::int16_t IsodataThreshold(const std::uint32_t* histogram);
    // Otsu's criterion over the bins low <= i < high, the last k with the largest value; low for an empty
    // range, high - 1 for one without counts.
    static std::int16_t OtsuThreshold(const std::uint32_t* histogram, int low, int high);
    // trunc(sqrt(r^2 + g^2 + b^2) * 0.5773149196287073): one below the level on grays above 0.
    static int Intensity(int red, int green, int blue);
    // Colour table of an image in the making: entry 1 black, entry 2 red, all others white.
    void ApplyMarkerPalette();

    DibImage* image = nullptr;  // borrowed
    std::int32_t width = 0;
    std::uint32_t rowBytes = 0;
    RGBQUAD* palette = nullptr;
    std::int32_t height = 0;
    std::uint32_t bitCount = 0;
    std::uint8_t intensity[256];
    std::uint32_t histogram[256];

  protected:
    Binarizer() = default;

    // Every pixel below the threshold black, the others white.
    void BlackenBelow(std::int32_t threshold);
};

}  // namespace tavrix
