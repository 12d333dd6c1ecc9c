// SPDX-License-Identifier: MIT
#include <cstring>
#include <utility>

#include "automatic/Conversion.h"
#include "tavrix/automatic.h"

using namespace host;

namespace {

constexpr int kMaxScale = 3;

// A copy with the depth, sides and rows of a host's image.
HostImage CopyOf(const DibRecord& image) {
    const BITMAPINFOHEADER& header = *image.header;
    HostImage copy(static_cast<int>(header.biWidth), static_cast<int>(header.biHeight), header.biBitCount);
    std::memcpy(copy.Record().bits, image.bits, copy.RowBytes() * static_cast<std::size_t>(copy.Height()));
    return copy;
}

bool IsTaken(const BITMAPINFOHEADER& header) {
    const int bits = header.biBitCount;
    return (bits == 1 || bits == 8 || bits == 24) && header.biWidth > 0 && header.biHeight > 0 &&
           header.biWidth <= kMaxSide && header.biHeight <= kMaxSide;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t TavrixBinarizeAutomatically(
    HGLOBAL image, DibRecord* result, std::int32_t scale, double* confidence) {
    auto* block = static_cast<std::uint8_t*>(GlobalLock(image));
    if (block == nullptr || result == nullptr || scale < 0 || scale > kMaxScale) return 0;
    auto* header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    if (!IsTaken(*header)) return 0;
    const std::size_t tableBytes = header->biBitCount <= 8 ? std::size_t{4} << header->biBitCount : 0;
    const DibRecord record = {header, reinterpret_cast<RGBQUAD*>(block + header->biSize),
                              block + header->biSize + tableBytes};
    try {
        Conversion conversion = ToBlackAndWhite(CopyOf(record), {kAutomaticMode, false, scale});
        if (confidence != nullptr) *confidence = conversion.choice->confidence;
        *result = conversion.bits.Release();
        return conversion.scale;
    } catch (...) {  // out of memory, or enlarged beyond what the library takes
        return 0;
    }
}
