// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

#include <new>

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

std::size_t BlockBytesOf(const BITMAPINFOHEADER& header) {
    return kHeaderBytes + TableBytesOf(header.biBitCount) + header.biSizeImage;
}

}  // namespace

ImagePtr Wrap(HGLOBAL handle, unsigned depths) {
    const std::size_t blockBytes = platform::SizeOf(handle);
    if (blockBytes < kHeaderBytes) return nullptr;
    ImagePtr image(new (std::nothrow) DibImage(handle));
    if (!image || image->header == nullptr || !IsAcceptable(*image->header, depths) ||
        blockBytes < BlockBytesOf(*image->header)) {
        return nullptr;
    }
    return image;
}

ImagePtr Wrap(const DibRecord& record, unsigned depths) {
    if (record.header == nullptr || record.palette == nullptr || record.bits == nullptr ||
        !IsAcceptable(*record.header, depths)) {
        return nullptr;
    }
    return ImagePtr(new (std::nothrow) DibImage(record.header, record.palette, record.bits));
}

ImagePtr ToGray(ImagePtr image) {
    if (!image->Is24Bit()) return image;
    ImagePtr gray(new (std::nothrow) DibImage);
    if (!gray || !gray->Create(image->Width(), image->Height(), 8)) return nullptr;
    image->ConvertToGray(*gray);
    return gray;
}

}  // namespace tavrix::api
