// SPDX-License-Identifier: MIT
#include "geometry/InterpolationKernels.h"

#include <cstring>

namespace tavrix {
namespace {

constexpr int kRun = 64;  // pixels whose positions are computed at a time

// Positions of a run of pixels: offset of the first of the four neighbours, and the weights of the others.
struct Positions {
    std::uint32_t offset[kRun];
    double x[kRun];
    double y[kRun];

    void Compute(const TurnedRow& row, std::uint32_t pixelBytes, std::uint32_t rowBytes, int first,
                 int count) {
        for (int i = 0; i < count; ++i) {
            const double sourceX = row.SourceX(first + i), sourceY = row.SourceY(first + i);
            const int wholeX = static_cast<int>(sourceX), wholeY = static_cast<int>(sourceY);
            offset[i] = static_cast<std::uint32_t>(wholeY) * rowBytes +
                        static_cast<std::uint32_t>(wholeX) * pixelBytes;
            x[i] = sourceX - wholeX;
            y[i] = sourceY - wholeY;
        }
    }
};

template <class Number>
std::uint32_t Read(const std::uint8_t* from) {
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
}

// The value between four neighbours; the written order decides the last bit.
int Blend(double x, double y, std::uint32_t p00, std::uint32_t p10, std::uint32_t p01, std::uint32_t p11) {
    const auto value = [](std::uint32_t p) { return static_cast<double>(static_cast<int>(p)); };
    return static_cast<int>(x * (y * value(p11) + (1 - y) * value(p10)) +
                            (1 - x) * ((1 - y) * value(p00) + y * value(p01)));
}

void InterpolateGray(const TurnedRow& row, const std::uint8_t* source, std::uint32_t rowBytes, int first,
                     int last, std::uint8_t* target) {
    Positions at;
    std::uint32_t quad[kRun];  // the four neighbours, a byte each
    for (int start = first; start < last; start += kRun) {
        const int count = last - start < kRun ? last - start : kRun;
        at.Compute(row, 1, rowBytes, start, count);
        for (int i = 0; i < count; ++i) {
            const std::uint8_t* from = source + at.offset[i];
            quad[i] = Read<std::uint16_t>(from) | Read<std::uint16_t>(from + rowBytes) << 16;
        }
        for (int i = 0; i < count; ++i) {
            const std::uint32_t q = quad[i];
            target[start + i] = static_cast<std::uint8_t>(
                Blend(at.x[i], at.y[i], q & 255, q >> 8 & 255, q >> 16 & 255, q >> 24));
        }
    }
}

void InterpolateColor(const TurnedRow& row, const std::uint8_t* source, std::uint32_t rowBytes, int first,
                      int last, std::uint8_t* target) {
    Positions at;
    // Bytes of the upper and lower two neighbours: blue, green, red, blue and green, red.
    std::uint32_t near4[kRun], near2[kRun], far4[kRun], far2[kRun], pixel[kRun];
    for (int start = first; start < last; start += kRun) {
        const int count = last - start < kRun ? last - start : kRun;
        at.Compute(row, 3, rowBytes, start, count);
        for (int i = 0; i < count; ++i) {
            const std::uint8_t* from = source + at.offset[i];
            near4[i] = Read<std::uint32_t>(from);
            near2[i] = Read<std::uint16_t>(from + 4);
            far4[i] = Read<std::uint32_t>(from + rowBytes);
            far2[i] = Read<std::uint16_t>(from + rowBytes + 4);
        }
        for (int i = 0; i < count; ++i) {
            const double x = at.x[i], y = at.y[i];
            const int blue = Blend(x, y, near4[i] & 255, near4[i] >> 24, far4[i] & 255, far4[i] >> 24);
            const int green =
                Blend(x, y, near4[i] >> 8 & 255, near2[i] & 255, far4[i] >> 8 & 255, far2[i] & 255);
            const int red =
                Blend(x, y, near4[i] >> 16 & 255, near2[i] >> 8, far4[i] >> 16 & 255, far2[i] >> 8);
            pixel[i] = static_cast<std::uint32_t>(blue | green << 8 | red << 16);
        }
        for (int i = 0; i < count; ++i) std::memcpy(target + 3 * (start + i), &pixel[i], 3);
    }
}

}  // namespace

const InterpolationKernels InterpolationKernels::TAVRIX_KERNEL_LEVEL{.gray = InterpolateGray,
                                                                     .color = InterpolateColor};

}  // namespace tavrix
