// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

#include "platform/GlobalMemory.h"

namespace tavrix::api {
namespace {

unsigned DepthOf(const BITMAPINFOHEADER& header) {
    switch (header.biBitCount) {
        case 1: return k1Bit;
        case 8: return k8Bit;
        case 24: return k24Bit;
        default: return 0;
    }
}

bool IsSide(std::int64_t side) {
    return side >= 0 && side <= kMaxSide;
}

bool IsAcceptable(const BITMAPINFOHEADER& header, unsigned depths) {
    return header.biSize == kHeaderBytes && (DepthOf(header) & depths) != 0 && header.biCompression == 0 &&
           IsSide(header.biWidth) && IsSide(header.biHeight) &&
           header.biClrUsed == ColourCountOf(header.biBitCount) &&
           header.biSizeImage == RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight;
}

}  // namespace

ImagePtr Wrap(HGLOBAL handle, unsigned depths) {
    const std::size_t blockBytes = platform::SizeOf(handle);
    if (blockBytes < kHeaderBytes) return nullptr;
    ImagePtr image = DibImage::Borrow(handle);
    if (!image || !IsAcceptable(*image->header, depths) ||
        blockBytes < BlockBytesOf(image->header->biBitCount, image->header->biSizeImage)) {
        return nullptr;
    }
    return image;
}

ImagePtr Wrap(const DibRecord& record, unsigned depths) {
    if (record.header == nullptr || record.palette == nullptr || record.bits == nullptr ||
        !IsAcceptable(*record.header, depths)) {
        return nullptr;
    }
    return DibImage::Borrow(record);
}

ImagePtr ToGray(ImagePtr image, DibImage::Room room) {
    if (!image->Is24Bit()) return image;
    ImagePtr gray = DibImage::NewUncleared(image->Width(), image->Height(), 8, room);
    if (gray) image->ConvertToGray(*gray);
    return gray;
}

}  // namespace tavrix::api
