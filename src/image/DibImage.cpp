// SPDX-License-Identifier: MIT
#include "image/DibImage.h"

#include <cstring>
#include <limits>

#include "image/PixelKernels.h"
#include "platform/GlobalMemory.h"

namespace tavrix {
namespace {

constexpr RGBQUAD kWhite{255, 255, 255, 0};
constexpr double kDefaultResolution = 400.0;  // dots per inch
constexpr double kResolutionFactor = 254.0;

}  // namespace

DibImage::DibImage(const HGLOBAL& hostHandle) : handle(hostHandle), ownsHandle(false) {
    Lock();
}

DibImage::DibImage(BITMAPINFOHEADER* hostHeader, RGBQUAD* hostPalette, std::uint8_t* hostBits)
    : header(hostHeader), palette(hostPalette), bits(hostBits), ownsHandle(false) {}

DibImage::DibImage(const DibImage* other) {
    const BITMAPINFOHEADER& format = *other->header;
    handle = platform::AllocMovable(kHeaderBytes + TableBytesOf(format.biBitCount) + format.biSizeImage);
    auto* block = static_cast<std::uint8_t*>(platform::Lock(handle));
    if (block == nullptr) return;
    std::memcpy(block, other->header, kHeaderBytes);
    PointInto(block);
    if (format.biBitCount <= 8) std::memcpy(palette, other->palette, 4 * std::size_t{format.biClrUsed});
}

DibImage::~DibImage() {
    Release();
}

void DibImage::PointInto(void* block) {
    auto* bytes = static_cast<std::uint8_t*>(block);
    header = reinterpret_cast<BITMAPINFOHEADER*>(bytes);
    palette = reinterpret_cast<RGBQUAD*>(bytes + kHeaderBytes);
    bits = bytes + kHeaderBytes + TableBytesOf(header->biBitCount);
}

bool DibImage::Lock() {
    void* block = platform::Lock(handle);
    if (block == nullptr) return false;
    PointInto(block);
    return true;
}

void DibImage::Detach() {
    header = nullptr;
    bits = nullptr;
}

bool DibImage::Release() {
    if (handle == nullptr) return true;
    if (ownsHandle) {
        Detach();
        platform::Unlock(handle);
        platform::Free(handle);
        handle = nullptr;
    } else if (bits != nullptr) {
        platform::Unlock(handle);
        Detach();
    }
    return true;
}

bool DibImage::Create(int width, int height, int bitCount, double xResolution, double yResolution) {
    const std::uint64_t size = std::uint64_t{RowBytesOf(bitCount, width)} * height;
    const std::uint64_t total = kHeaderBytes + TableBytesOf(bitCount) + size;
    handle = nullptr;
    if (width < 0 || height < 0 || total > std::numeric_limits<std::int32_t>::max()) return false;
    handle = platform::AllocFixed(static_cast<std::size_t>(total));
    auto* block = static_cast<std::uint8_t*>(platform::Lock(handle));
    if (block == nullptr) return false;
    header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    *header = {};
    header->biSize = kHeaderBytes;
    header->biWidth = width;
    header->biHeight = height;
    header->biPlanes = 1;
    header->biBitCount = static_cast<std::uint16_t>(bitCount);
    header->biSizeImage = static_cast<std::uint32_t>(size);
    header->biXPelsPerMeter = static_cast<std::int32_t>(xResolution * kResolutionFactor);
    header->biYPelsPerMeter = static_cast<std::int32_t>(yResolution * kResolutionFactor);
    header->biClrUsed = ColourCountOf(bitCount);
    PointInto(block);
    return true;
}

bool DibImage::Create(int width, int height, int bitCount) {
    if (!Create(width, height, bitCount, kDefaultResolution, kDefaultResolution)) return false;
    InitPalette();
    return true;
}

void DibImage::InitPalette() {
    const bool wasDetached = bits == nullptr;
    if (wasDetached && !Lock()) return;
    if (header->biClrUsed == 2) {
        palette[1] = kWhite;
    } else if (header->biClrUsed == 256) {
        for (unsigned i = 0; i < 256; ++i) {
            const auto level = static_cast<std::uint8_t>(i);
            palette[i] = {level, level, level, 0};
        }
    }
    if (wasDetached) Detach();
}

int DibImage::GetPixel(int x, int y) const {
    const bool oneBit = Is1Bit();
    const int columns = Is24Bit() ? 3 * Width() : Width();
    if (x < 0 || x >= columns || y < 0 || y >= Height()) return oneBit ? 1 : 0;
    return oneBit ? Row(y)[x / 8] >> (7 - x % 8) & 1 : Row(y)[x];
}

bool DibImage::SetPixel(int x, int y, int value) {
    if (Is1Bit()) return SetBit(x, y, value);
    const int columns = Is24Bit() ? 3 * Width() : Width();
    if (x >= 0 && x < columns && y >= 0 && y < Height()) Row(y)[x] = static_cast<std::uint8_t>(value);
    return true;
}

bool DibImage::SetBit(int x, int y, int on) {
    if (x < 0 || x >= Width() || y < 0 || y >= Height()) return true;
    const auto mask = static_cast<std::uint8_t>(0x80 >> x % 8);
    std::uint8_t& byte = Row(y)[x / 8];
    byte = static_cast<std::uint8_t>(on != 0 ? byte | mask : byte & ~mask);
    return true;
}

bool DibImage::ExportToHandle(HGLOBAL* result) const {
    const std::size_t table = 4 * std::size_t{header->biClrUsed};
    const HGLOBAL copy =
        platform::AllocMovable(kHeaderBytes + TableBytesOf(header->biBitCount) + header->biSizeImage);
    auto* block = static_cast<std::uint8_t*>(platform::Lock(copy));
    if (block == nullptr) return false;
    std::memcpy(block, header, kHeaderBytes);
    std::memcpy(block + kHeaderBytes, palette, table);
    std::memcpy(block + kHeaderBytes + table, bits, header->biSizeImage);
    *result = copy;
    return true;
}

bool DibImage::ExportToRecord(DibRecord* record) const {
    HGLOBAL copy = nullptr;
    if (!ExportToHandle(&copy)) return false;
    auto* block = static_cast<std::uint8_t*>(platform::Lock(copy));
    platform::Unlock(copy);  // the second lock; the first stays
    record->header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    record->palette = reinterpret_cast<RGBQUAD*>(block + kHeaderBytes);
    record->bits = block + kHeaderBytes + 4 * std::size_t{header->biClrUsed};
    return true;
}

bool DibImage::ExportOneBit(DibRecord* record, bool needsPacking) const {
    const std::size_t rowBytes = RowBytesOf(1, Width());
    const std::size_t size = needsPacking ? rowBytes * Height() : header->biSizeImage;
    const HGLOBAL copy = platform::AllocMovable(kHeaderBytes + TableBytesOf(1) + size);
    auto* block = static_cast<std::uint8_t*>(platform::Lock(copy));
    if (block == nullptr) return false;
    record->header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    record->palette = reinterpret_cast<RGBQUAD*>(block + kHeaderBytes);
    record->bits = block + kHeaderBytes + TableBytesOf(1);
    std::memcpy(record->header, header, kHeaderBytes);
    if (!needsPacking) {
        std::memcpy(record->palette, palette, TableBytesOf(1));
        std::memcpy(record->bits, bits, size);
        return true;
    }
    record->header->biBitCount = 1;
    record->header->biSizeImage = static_cast<std::uint32_t>(size);
    record->header->biClrUsed = 2;
    record->palette[1] = kWhite;
    const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
    for (int y = 0; y < Height(); ++y) {
        packAbove(Row(y), Width(), 0, record->bits + rowBytes * y);
    }
    return true;
}

bool DibImage::PackToOneBit(const std::uint8_t* source) {
    const std::size_t sourceRowBytes = RowBytes();
    const std::size_t rowBytes = RowBytesOf(1, Width());
    header->biBitCount = 1;
    header->biSizeImage = static_cast<std::uint32_t>(rowBytes * Height());
    header->biClrUsed = 2;
    palette[1] = {255, 255, 255, palette[1].rgbReserved};
    std::memset(bits, 0, header->biSizeImage);
    const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
    for (int y = 0; y < Height(); ++y) {
        packAbove(source + sourceRowBytes * y, Width(), 1, bits + rowBytes * y);
    }
    return true;
}

bool DibImage::CopyBitsFrom(const DibImage& source) {
    std::memcpy(bits, source.bits, header->biSizeImage);
    return true;
}

bool DibImage::ConvertToGray(DibImage& gray) const {
    const auto grayRow = platform::KernelsOf<PixelKernels>().grayRow;
    for (int y = 0; y < Height(); ++y) grayRow(Row(y), Width(), gray.Row(y));
    return true;
}

}  // namespace tavrix
