// SPDX-License-Identifier: MIT
#include "Picture.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "picture/GrayLevel.h"

using host::HostImage;

namespace web {
namespace {

constexpr unsigned kOpaque = 255;

std::uint8_t OnWhite(unsigned level, unsigned alpha) {
    return static_cast<std::uint8_t>((level * alpha + kOpaque * (kOpaque - alpha) + kOpaque / 2) / kOpaque);
}

void PutColours(std::uint8_t* to, const std::uint8_t* from, int width, Layout layout) {
    if (layout == Layout::kRgb) {
        for (int x = 0; x < width; ++x, from += 3, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
        return;
    }
    for (int x = 0; x < width; ++x, from += 4, to += 3) {
        if (from[3] == kOpaque) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        } else {
            for (int k = 0; k < 3; ++k) to[k] = OnWhite(from[2 - k], from[3]);
        }
    }
}

// Gray of opaque pixels, a run at a time; false where there are others.
bool PutGray(std::uint8_t* to, const std::uint8_t* from, int width) {
    constexpr int kRun = 64;  // pixels
    for (int start = 0; start < width; start += kRun, from += 4 * kRun, to += kRun) {
        const int count = std::min(kRun, width - start);
        unsigned isMiddle = 0, alpha = kOpaque;
        for (int x = 0; x < count; ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, from + 4 * x, sizeof pixel);
            const unsigned thousandths =
                host::Thousandths(pixel & 0xFF, pixel >> 8 & 0xFF, pixel >> 16 & 0xFF);
            const unsigned level = host::LevelOf(thousandths);
            to[x] = static_cast<std::uint8_t>(level);
            isMiddle |= host::IsMiddle(level, thousandths);
            alpha &= pixel >> 24;
        }
        if (alpha != kOpaque) return false;
        if (isMiddle == 0) continue;
        for (int x = 0; x < count; ++x) to[x] = host::GrayOf(from[4 * x], from[4 * x + 1], from[4 * x + 2]);
    }
    return true;
}

std::size_t BytesOf(Layout layout, int width) {
    return layout == Layout::kBits ? static_cast<std::size_t>(width + 7) / 8
                                   : static_cast<std::size_t>(width) * static_cast<std::size_t>(layout);
}

}  // namespace

void PutRows(HostImage& picture, int first, int count, Layout layout, const std::uint8_t* pixels) {
    const std::size_t bytes = BytesOf(layout, picture.Width());
    if (layout == Layout::kBits || layout == Layout::kGray) {
        for (int y = 0; y < count; ++y) std::memcpy(picture.TopRow(first + y), pixels + y * bytes, bytes);
        return;
    }
    if (picture.BitCount() == 24) {
        for (int y = 0; y < count; ++y) {
            PutColours(picture.TopRow(first + y), pixels + y * bytes, picture.Width(), layout);
        }
        return;
    }
    bool isOpaque = layout == Layout::kRgba;
    for (int y = 0; isOpaque && y < count; ++y) {
        isOpaque = PutGray(picture.TopRow(first + y), pixels + y * bytes, picture.Width());
    }
    if (isOpaque) return;
    HostImage colours(picture.Width(), count, 24);
    PutRows(colours, 0, count, layout, pixels);
    const HostImage gray = ToGray(std::move(colours));
    for (int y = 0; y < count; ++y) std::copy_n(gray.TopRow(y), gray.RowBytes(), picture.TopRow(first + y));
}

void GetRows(const HostImage& picture, int first, int count, std::uint8_t* pixels) {
    const Layout layout = picture.BitCount() == 1   ? Layout::kBits
                          : picture.BitCount() == 8 ? Layout::kGray
                                                    : Layout::kRgba;
    const std::size_t bytes = BytesOf(layout, picture.Width());
    for (int y = 0; y < count; ++y, pixels += bytes) {
        const std::uint8_t* from = picture.TopRow(first + y);
        if (layout != Layout::kRgba) {
            std::memcpy(pixels, from, bytes);
            if (layout == Layout::kBits && picture.Width() % 8 != 0) {
                pixels[bytes - 1] &= static_cast<std::uint8_t>(0xFF00 >> picture.Width() % 8);
            }
            continue;
        }
        for (int x = 0; x < picture.Width(); ++x, from += 3) {
            pixels[4 * x] = from[2];
            pixels[4 * x + 1] = from[1];
            pixels[4 * x + 2] = from[0];
            pixels[4 * x + 3] = kOpaque;
        }
    }
}

}  // namespace web
