// SPDX-License-Identifier: MIT
#include "image/DibImage.h"

#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "image/HostBlock.h"
#include "image/PixelKernels.h"
#include "image/WriteBmp.h"
#include "platform/GlobalMemory.h"

namespace tavrix {
namespace {

constexpr RGBQUAD kWhite{255, 255, 255, 0};
constexpr double kDefaultResolution = 400.0;  // dots per inch
constexpr double kResolutionFactor = 254.0;
// Limits of packing: greater gray values become white.
constexpr std::uint8_t kNonzeroIsWhite = 0;
constexpr std::uint8_t kAboveOneIsWhite = 1;

// Turns the header of an 8-bit image into that of a 1-bit one of its size.
void MakeOneBit(BITMAPINFOHEADER& header) {
    header.biBitCount = 1;
    header.biSizeImage = static_cast<std::uint32_t>(RowBytesOf(1, header.biWidth) * header.biHeight);
    header.biClrUsed = 2;
}

// A block of so many pixels, or 0 when that is too large for one.
std::size_t BytesFor(int width, int height, int bitCount) {
    if (width < 0 || height < 0) return 0;
    const std::uint64_t bytes =
        BlockBytesOf(bitCount, 0) + std::uint64_t{RowBytesOf(bitCount, width)} * height;
    return bytes <= std::numeric_limits<std::int32_t>::max() ? static_cast<std::size_t>(bytes) : 0;
}

// Packs 8-bit rows into the rows of a 1-bit image of this header.
void PackRows(const std::uint8_t* source, std::size_t sourceRowBytes, std::uint8_t limit,
              const BITMAPINFOHEADER& header, std::uint8_t* target) {
    const auto packAbove = platform::KernelsOf<PixelKernels>().packAbove;
    const std::size_t rowBytes = RowBytesOf(1, header.biWidth);
    for (int y = 0; y < header.biHeight; ++y) {
        ClearPadding(target + rowBytes * y, rowBytes);
        packAbove(source + sourceRowBytes * y, header.biWidth, limit, target + rowBytes * y);
    }
}

}  // namespace

ImagePtr DibImage::Borrow(HGLOBAL handle) {
    ImagePtr image(new (std::nothrow) DibImage(handle));
    return image && image->header != nullptr ? std::move(image) : nullptr;
}

ImagePtr DibImage::Borrow(const DibRecord& record) {
    return ImagePtr(new (std::nothrow) DibImage(record.header, record.palette, record.bits));
}

ImagePtr DibImage::New(int width, int height, int bitCount) {
    ImagePtr image(new (std::nothrow) DibImage);
    return image && image->Create(width, height, bitCount) ? std::move(image) : nullptr;
}

ImagePtr DibImage::NewUncleared(int width, int height, int bitCount, Room room) {
    ImagePtr image(new (std::nothrow) DibImage);
    const std::size_t bytes = BytesFor(width, height, bitCount);
    if (!image || bytes == 0) return nullptr;
    const std::size_t behind = room == Room::kOfPixels ? bytes - BlockBytesOf(bitCount, 0) : 0;
    image->handle = platform::AllocUncleared(bytes + behind);
    void* block = platform::Lock(image->handle);
    if (block == nullptr) return nullptr;
    image->WriteHeader(block, width, height, bitCount);
    image->InitPalette();
    for (int y = 0; y < height; ++y) ClearPadding(image->Row(y), image->RowBytes());
    return image;
}

ImagePtr DibImage::BlankLike(const DibImage& other) {
    ImagePtr image(new (std::nothrow) DibImage(&other));
    return image && image->bits != nullptr ? std::move(image) : nullptr;
}

DibImage::DibImage(const HGLOBAL& hostHandle) : handle(hostHandle), ownsHandle(false) {
    Lock();
}

DibImage::DibImage(BITMAPINFOHEADER* hostHeader, RGBQUAD* hostPalette, std::uint8_t* hostBits)
    : header(hostHeader), palette(hostPalette), bits(hostBits), ownsHandle(false) {}

DibImage::DibImage(const DibImage* other) {
    const BITMAPINFOHEADER& format = *other->header;
    handle = platform::AllocMovable(BlockBytesOf(format.biBitCount, format.biSizeImage));
    void* block = platform::Lock(handle);
    if (block == nullptr) return;
    std::memcpy(block, other->header, kHeaderBytes);
    PointInto(block);
    std::memcpy(palette, other->palette, TableBytesOf(format.biBitCount));
}

DibImage::~DibImage() {
    Release();
}

void DibImage::PointInto(void* block) {
    const DibRecord parts = PartsOf(block, static_cast<BITMAPINFOHEADER*>(block)->biBitCount);
    header = parts.header;
    palette = parts.palette;
    bits = parts.bits;
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

void DibImage::WriteHeader(void* block, int width, int height, int bitCount) {
    std::memset(block, 0, BlockBytesOf(bitCount, 0));
    static_cast<BITMAPINFOHEADER*>(block)->biBitCount = static_cast<std::uint16_t>(bitCount);
    PointInto(block);
    header->biSize = kHeaderBytes;
    header->biWidth = width;
    header->biHeight = height;
    header->biPlanes = 1;
    header->biSizeImage = static_cast<std::uint32_t>(RowBytesOf(bitCount, width) * height);
    header->biXPelsPerMeter = static_cast<std::int32_t>(kDefaultResolution * kResolutionFactor);
    header->biYPelsPerMeter = header->biXPelsPerMeter;
    header->biClrUsed = ColourCountOf(bitCount);
}

bool DibImage::Create(int width, int height, int bitCount, double xResolution, double yResolution) {
    Release();
    ownsHandle = true;
    handle = nullptr;
    const std::size_t bytes = BytesFor(width, height, bitCount);
    if (bytes == 0) return false;
    handle = platform::AllocFixed(bytes);
    void* block = platform::Lock(handle);
    if (block == nullptr) return false;
    WriteHeader(block, width, height, bitCount);
    header->biXPelsPerMeter = static_cast<std::int32_t>(xResolution * kResolutionFactor);
    header->biYPelsPerMeter = static_cast<std::int32_t>(yResolution * kResolutionFactor);
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

bool DibImage::ExportToRecord(DibRecord* record) const {
    const DibRecord copy = NewHostBlock(header->biBitCount, header->biSizeImage);
    if (copy.header == nullptr) return false;
    std::memcpy(copy.header, header, kHeaderBytes);
    std::memcpy(copy.palette, palette, TableBytesOf(header->biBitCount));
    std::memcpy(copy.bits, bits, header->biSizeImage);
    *record = copy;
    return true;
}

bool DibImage::ExportToHandle(HGLOBAL* result) const {
    DibRecord copy{};
    if (!ExportToRecord(&copy)) return false;
    *result = platform::HandleOf(copy.header);
    return true;
}

std::uint8_t* DibImage::RoomOfPixels() {
    const std::size_t pixels = header->biSizeImage;
    const bool hasRoom =
        ownsHandle && platform::SizeOf(handle) >= BlockBytesOf(header->biBitCount, pixels) + pixels;
    return hasRoom ? bits + pixels : nullptr;
}

bool DibImage::HandOver(ImagePtr image, DibRecord* record) {
    if (!image) return false;
    *record = {image->header, image->palette, image->bits};
    image->handle = nullptr;
    return true;
}

bool DibImage::ExportOneBit(DibRecord* record, bool needsPacking) const {
    if (!needsPacking) return ExportToRecord(record);
    const std::size_t rowBytes = RowBytesOf(1, Width());
    const DibRecord packed = NewHostBlock(1, rowBytes * Height());
    if (packed.header == nullptr) return false;
    std::memcpy(packed.header, header, kHeaderBytes);
    MakeOneBit(*packed.header);
    packed.palette[1] = kWhite;
    PackRows(bits, RowBytes(), kNonzeroIsWhite, *packed.header, packed.bits);
    *record = packed;
    return true;
}

bool DibImage::PackToOneBit(const std::uint8_t* source) {
    const std::size_t sourceRowBytes = RowBytes();
    MakeOneBit(*header);
    palette[1] = {255, 255, 255, palette[1].rgbReserved};
    PackRows(source, sourceRowBytes, kAboveOneIsWhite, *header, bits);
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

bool DibImage::WriteBmp(const char* path) const {
    return WriteBmpFile(path, *header, palette, bits);
}

}  // namespace tavrix
