// SPDX-License-Identifier: MIT
#include "binarize/MaskKernels.h"

#include "platform/Vectors.h"

namespace tavrix {
namespace {

int CountFrom(const Byte* row, int count, int threshold) {
    int x = 0, from = 0;
#ifndef TAVRIX_PLAIN_KERNELS
    LaneCounter counter;
    const Vector limit = Fill(threshold);
    for (; x + kVectorBytes <= count; x += kVectorBytes) {
        const Vector bytes = Load(row + x);
        counter.Add(Equal(Max(bytes, limit), bytes));
    }
    from = counter.Total();
#endif
    for (; x < count; ++x) from += row[x] >= threshold;
    return from;
}

void MaskUpTo(const Byte* row, int count, int limit, Byte* target) {
    const auto top = static_cast<Byte>(limit);
    const Byte upTo = limit < 0 ? 0 : 255;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) target[x] = row[x] <= top ? upTo : 0;
}

void MaskAbove(const Byte* row, int count, int limit, Byte* target) {
    const auto top = static_cast<Byte>(limit);
    const Byte upTo = limit < 0 ? 255 : 0;
#pragma GCC ivdep
    for (int x = 0; x < count; ++x) target[x] = row[x] > top ? 255 : upTo;
}

}  // namespace

const MaskKernels MaskKernels::TAVRIX_KERNEL_LEVEL{
    .countFrom = CountFrom, .maskUpTo = MaskUpTo, .maskAbove = MaskAbove};

}  // namespace tavrix
