// SPDX-License-Identifier: MIT
#include "binarize/PageKernels.h"

#include <cmath>

namespace tavrix::TAVRIX_KERNEL_TARGET {

using Byte = std::uint8_t;

void SobelRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
    for (int x = 0; x < count; ++x) {
        const int gy =
            2 * (before[x] - after[x]) - after[x - 1] - after[x + 1] + before[x - 1] + before[x + 1];
        const int gx =
            2 * (row[x + 1] - row[x - 1]) - before[x - 1] - after[x - 1] + before[x + 1] + after[x + 1];
        const int magnitude = static_cast<int>(std::sqrt(static_cast<double>(gx * gx + gy * gy)));
        target[x] = static_cast<Byte>(magnitude < 255 ? magnitude : 255);
    }
}

void MeanRow(const Byte* before, const Byte* row, const Byte* after, int count, Byte* target) {
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x] + row[x + 1] +
                        after[x - 1] + after[x] + after[x + 1];
        target[x] = static_cast<Byte>(sum / 9);
    }
}

void SharpenRow(const Byte* before, const Byte* row, const Byte* after, int count,
                const std::int16_t* products, Byte* target) {
    for (int x = 0; x < count; ++x) {
        const int sum = before[x - 1] + before[x] + before[x + 1] + row[x - 1] + row[x + 1] + after[x - 1] +
                        after[x] + after[x + 1];
        const int value = products[row[x]] - sum;
        target[x] = static_cast<Byte>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
}

int CountFrom(const Byte* row, int count, int threshold) {
    int from = 0;
    for (int x = 0; x < count; ++x) from += row[x] >= threshold;
    return from;
}

void MaskUpTo(const Byte* row, int count, int limit, Byte* target) {
    for (int x = 0; x < count; ++x) target[x] = row[x] <= limit ? 255 : 0;
}

void MaskAbove(const Byte* row, int count, int limit, Byte* target) {
    for (int x = 0; x < count; ++x) target[x] = row[x] > limit ? 255 : 0;
}

int CountTips(const Byte* row, const Byte* after, int count) {
    int tips = 0;
    for (int x = 0; x < count; ++x) {
        tips += row[x] == 0 && row[x + 1] != 0 && after[x - 1] != 0 && after[x] != 0 && after[x + 1] != 0;
    }
    return tips;
}

void ThresholdRegionRow(const Byte* row, int count, int threshold, bool force, Byte* target,
                        std::int64_t* dark, std::int64_t* light) {
    int darkCount = 0, lightCount = 0;
    const int forced = force ? 255 : 0;
    for (int x = 0; x < count; ++x) {
        const bool isDark = row[x] < threshold;
        const bool isLight = !isDark && (target[x] | forced) != 0;
        target[x] = isLight ? 255 : 0;
        darkCount += isDark;
        lightCount += isLight;
    }
    *dark += darkCount;
    *light += lightCount;
}

void MergeRow(Byte* target, const Byte* other, int count) {
    for (int x = 0; x < count; ++x) target[x] = (target[x] | other[x]) == 0 ? 0 : 255;
}

void EvenZeroBits(const Byte* row, int count, std::uint64_t* words) {
    for (int x = 0; x <= count / 64 * 64 + 64; x += 64) words[x / 64] = 0;
    for (int x = 0; x < count; ++x) words[x / 64] |= std::uint64_t{row[2 * x] == 0} << x % 64;
}

void ApplyEdgesRow(Byte* target, const Byte* mask, int count) {
    for (int x = 0; x < count; ++x) target[x] = target[x] == 1 || mask[x] == 0 ? 1 : 254;
}

void MarkRow(Byte* row, int count) {
    for (int x = 0; x < count; ++x) {
        const Byte value = row[x];
        row[x] = value == 0 ? Byte{1} : value == 255 ? Byte{254} : value;
    }
}

}  // namespace tavrix::TAVRIX_KERNEL_TARGET
