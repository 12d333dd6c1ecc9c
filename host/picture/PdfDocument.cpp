// SPDX-License-Identifier: MIT
#include "picture/PdfDocument.h"

#include <hpdf.h>

#include <algorithm>
#include <string>

#include "picture/PictureWriter.h"

namespace host {
namespace {

constexpr double kPointsPerInch = 72;
constexpr double kUsualDotsPerInch = 300;  // of a picture that does not say
// Sides of a page that PDF allows, in points.
constexpr double kLeastSide = HPDF_MIN_PAGE_SIZE, kMostSide = HPDF_MAX_PAGE_SIZE;

void Check(HPDF_Doc document) {
    const HPDF_STATUS status = HPDF_GetError(document);
    if (status == HPDF_OK) return;
    FailWriting(status == HPDF_FAILD_TO_ALLOC_MEM ? "PDF: out of memory"
                                                  : "PDF: libharu error " + std::to_string(status));
}

HPDF_Image LoadImage(HPDF_Doc document, const Picture& page) {
    const HostImage& image = page.image;
    if (image.BitCount() == 1) {
        // The encoder takes ones for black.
        std::vector<std::uint8_t> bits(image.RowBytes() * static_cast<std::size_t>(image.Height()));
        std::transform(image.Record().bits, image.Record().bits + bits.size(), bits.begin(),
                       [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
        return HPDF_Image_LoadRaw1BitImageFromMem(
            document, bits.data(), static_cast<HPDF_UINT>(image.Width()),
            static_cast<HPDF_UINT>(image.Height()), static_cast<HPDF_UINT>(image.RowBytes()),
            HPDF_FALSE /* as CCITT counts */, HPDF_FALSE /* bottom row first */);
    }
    const std::vector<std::uint8_t> jpeg = EncodeJpeg(page);
    return HPDF_LoadJpegImageFromMem(document, jpeg.data(), static_cast<HPDF_UINT>(jpeg.size()));
}

}  // namespace

void PdfDocument::Closer::operator()(_HPDF_Doc_Rec* handle) const {
    HPDF_Free(handle);
}

PdfDocument::PdfDocument() : document(HPDF_New(nullptr, nullptr)) {
    if (!document) FailWriting("PDF: out of memory");
    HPDF_SetCompressionMode(document.get(), HPDF_COMP_ALL);
}

void PdfDocument::Add(const Picture& page) {
    const Resolution dots =
        page.resolution.IsKnown() ? page.resolution : Resolution{kUsualDotsPerInch, kUsualDotsPerInch};
    const double width = page.image.Width() * kPointsPerInch / dots.x;
    const double height = page.image.Height() * kPointsPerInch / dots.y;
    // A page beyond the limits keeps its shape as far as they let it.
    const double shrink = std::min(1.0, kMostSide / std::max(width, height));
    const auto side = [shrink](double points) {
        return static_cast<HPDF_REAL>(std::max(points * shrink, kLeastSide));
    };
    const HPDF_Page sheet = HPDF_AddPage(document.get());
    Check(document.get());
    HPDF_Page_SetWidth(sheet, side(width));
    HPDF_Page_SetHeight(sheet, side(height));
    const HPDF_Image picture = LoadImage(document.get(), page);
    Check(document.get());
    HPDF_Page_DrawImage(sheet, picture, 0, 0, side(width), side(height));
    Check(document.get());
}

std::vector<std::uint8_t> PdfDocument::Finish() {
    HPDF_SaveToStream(document.get());
    Check(document.get());
    HPDF_UINT32 size = HPDF_GetStreamSize(document.get());
    std::vector<std::uint8_t> bytes(size);
    HPDF_ResetStream(document.get());
    HPDF_ReadFromStream(document.get(), bytes.data(), &size);
    bytes.resize(size);
    return bytes;
}

}  // namespace host
