// SPDX-License-Identifier: MIT
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "automatic/Conversion.h"
#include "automatic/LogoMark.h"
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

// A host's block, locked while somebody reads it.
struct LockedBlock {
    explicit LockedBlock(HGLOBAL image)
        : handle(image), bytes(static_cast<std::uint8_t*>(GlobalLock(image))) {}
    LockedBlock(const LockedBlock&) = delete;
    LockedBlock& operator=(const LockedBlock&) = delete;
    ~LockedBlock() {
        if (bytes != nullptr) GlobalUnlock(handle);
    }

    const HGLOBAL handle;
    std::uint8_t* const bytes;
};

// A copy of a host's image; nothing where the library would refuse it. Throws std::bad_alloc.
std::optional<HostImage> Read(HGLOBAL image) {
    const LockedBlock block(image);
    if (block.bytes == nullptr) return std::nullopt;
    auto* header = reinterpret_cast<BITMAPINFOHEADER*>(block.bytes);
    if (!IsTaken(*header)) return std::nullopt;
    const std::size_t tableBytes = header->biBitCount <= 8 ? std::size_t{4} << header->biBitCount : 0;
    return CopyOf({header, reinterpret_cast<RGBQUAD*>(block.bytes + header->biSize),
                   block.bytes + header->biSize + tableBytes});
}

// Throws std::bad_alloc, PictureError; nothing where the library would refuse the image or the scale.
std::optional<Conversion> Convert(HGLOBAL image, std::int32_t scale) {
    if (scale < 0 || scale > kMaxScale) return std::nullopt;
    std::optional<HostImage> copy = Read(image);
    if (!copy) return std::nullopt;
    return ToBlackAndWhite(std::move(*copy), {kAutomaticMode, false, scale});
}

DibRecord Released(HostImage& image) {
    return image.Handle() != nullptr ? image.Release() : DibRecord{};
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t TavrixReadAutomatically(
    HGLOBAL image, std::int32_t scale, TavrixAutomatic* result) {
    if (result == nullptr) return 0;
    try {
        std::optional<Conversion> conversion = Convert(image, scale);
        if (!conversion) return 0;
        std::string warnings;
        for (const std::string& warning : conversion->warnings) warnings += warning + "\n";
        *result = {Released(conversion->bits),
                   Released(conversion->letters),
                   conversion->scale,
                   conversion->choice->confidence,
                   {}};
        warnings.copy(result->warnings, sizeof result->warnings - 1);
        return 1;
    } catch (...) {  // out of memory, or enlarged beyond what the library takes
        return 0;
    }
}

extern "C" __attribute__((visibility("default"))) std::int32_t TavrixFindLogo(HGLOBAL image, LogoRect* logo) {
    if (logo == nullptr) return 0;
    try {
        const std::optional<HostImage> bits = Read(image);
        if (!bits || bits->BitCount() != 1) return 0;
        const std::optional<Box> box = FindLogoMark(*bits);
        if (!box) return 0;
        const auto row = [&bits](int y) { return static_cast<std::int16_t>(bits->Height() - 1 - y); };
        *logo = {static_cast<std::int16_t>(box->left), row(box->top), static_cast<std::int16_t>(box->right),
                 row(box->bottom), 0};
        return 1;
    } catch (...) {
        return 0;
    }
}

extern "C" __attribute__((visibility("default"))) std::int32_t TavrixBinarizeAutomatically(
    HGLOBAL image, DibRecord* result, std::int32_t scale, double* confidence) {
    if (result == nullptr) return 0;
    try {
        std::optional<Conversion> conversion = Convert(image, scale);
        if (!conversion) return 0;
        if (confidence != nullptr) *confidence = conversion->choice->confidence;
        *result = conversion->bits.Release();
        return conversion->scale;
    } catch (...) {
        return 0;
    }
}
