// SPDX-License-Identifier: MIT
#include "picture/PictureWriter.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <csetjmp>
#include <cstdlib>
#include <memory>
#include <utility>

#include "picture/JpegLibrary.h"
#include "picture/PdfDocument.h"
#include "picture/TiffMemory.h"

namespace host {
namespace {

using Buffer = std::vector<std::uint8_t>;

constexpr int kJpegQuality = 90;
constexpr int kQuickLevel = 1;  // of Deflate

std::uint32_t DotsPerMetre(double dotsPerInch) {
    return static_cast<std::uint32_t>(std::lround(dotsPerInch / kMetresPerInch));
}

// Resolutions that the fields of every format can hold, in dots per inch.
bool IsStorable(const Resolution& resolution) {
    constexpr double kMost = 60000;
    return resolution.IsKnown() && resolution.x < kMost && resolution.y < kMost;
}

// The callbacks of libpng and libjpeg may not throw: they note a failure and leave by longjmp.
void AppendPng(png_structp png, png_bytep data, std::size_t count) {
    auto& buffer = *static_cast<Buffer*>(png_get_io_ptr(png));
    bool isDone = true;
    try {
        buffer.insert(buffer.end(), data, data + count);
    } catch (...) {
        isDone = false;
    }
    if (!isDone) png_error(png, "out of memory");
}

bool WritePng(png_structp png, png_infop info, const Picture& page, png_bytepp rows, Effort effort) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    const HostImage& image = page.image;
    const bool isColour = image.BitCount() == 24;
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.Width()), static_cast<png_uint_32>(image.Height()),
                 isColour ? 8 : image.BitCount(), isColour ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (IsStorable(page.resolution)) {
        png_set_pHYs(png, info, DotsPerMetre(page.resolution.x), DotsPerMetre(page.resolution.y),
                     PNG_RESOLUTION_METER);
    }
    if (effort == Effort::kQuick) {
        png_set_compression_level(png, kQuickLevel);
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    }
    png_write_info(png, info);
    if (isColour) png_set_bgr(png);
    png_write_image(png, rows);
    png_write_end(png, info);
    return true;
}

Buffer EncodePng(const Picture& page, Effort effort) {
    Buffer buffer;
    std::vector<png_bytep> rows;
    for (int y = 0; y < page.image.Height(); ++y) rows.push_back(page.image.TopRow(y));
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info != nullptr) png_set_write_fn(png, &buffer, AppendPng, nullptr);
    const bool isDone = info != nullptr && WritePng(png, info, page, rows.data(), effort);
    png_destroy_write_struct(&png, &info);
    if (!isDone) FailWriting("the PNG encoder failed");
    return buffer;
}

struct JpegErrors {
    jpeg_error_mgr base;
    std::jmp_buf escape;
};

void EscapeJpeg(j_common_ptr jpeg) {
    std::longjmp(reinterpret_cast<JpegErrors*>(jpeg->err)->escape, 1);
}

bool WriteJpeg(jpeg_compress_struct& jpeg, JpegErrors& errors, const Picture& page, unsigned char** out,
               unsigned long* size) {
    if (setjmp(errors.escape) != 0) return false;
    jpeg_create_compress(&jpeg);
    const HostImage& image = page.image;
    jpeg_mem_dest(&jpeg, out, size);
    jpeg.image_width = static_cast<JDIMENSION>(image.Width());
    jpeg.image_height = static_cast<JDIMENSION>(image.Height());
    jpeg.input_components = image.BitCount() / 8;
    jpeg.in_color_space = image.BitCount() == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, kJpegQuality, TRUE);
    // Thin coloured strokes keep their colour.
    jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
    if (IsStorable(page.resolution)) {
        jpeg.density_unit = 1;
        jpeg.X_density = static_cast<UINT16>(std::lround(page.resolution.x));
        jpeg.Y_density = static_cast<UINT16>(std::lround(page.resolution.y));
    }
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
        JSAMPROW row = image.TopRow(static_cast<int>(jpeg.next_scanline));
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    return true;
}

}  // namespace

Buffer EncodeJpeg(const Picture& page) {
    jpeg_compress_struct jpeg = {};  // destroying one that was never created does nothing
    JpegErrors errors = {};
    jpeg.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = EscapeJpeg;
    unsigned char* out = nullptr;
    unsigned long size = 0;
    const bool isDone = WriteJpeg(jpeg, errors, page, &out, &size);
    jpeg_destroy_compress(&jpeg);
    const std::unique_ptr<unsigned char, void (*)(void*)> owner(out, std::free);
    if (!isDone) FailWriting("the JPEG encoder failed");
    return Buffer(out, out + size);
}

namespace {

void WriteTiffPage(TIFF* tiff, const Picture& page, std::size_t index, std::size_t count, Effort effort) {
    const HostImage& image = page.image;
    const bool isOneBit = image.BitCount() == 1;
    const int samples = image.BitCount() == 24 ? 3 : 1;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.Width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(image.Height()));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, isOneBit ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 isOneBit       ? PHOTOMETRIC_MINISWHITE
                 : samples == 1 ? PHOTOMETRIC_MINISBLACK
                                : PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, isOneBit ? COMPRESSION_CCITTFAX4 : COMPRESSION_ADOBE_DEFLATE);
    if (!isOneBit) TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (!isOneBit && effort == Effort::kQuick) TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kQuickLevel);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                 isOneBit ? static_cast<std::uint32_t>(image.Height()) : TIFFDefaultStripSize(tiff, 0));
    if (IsStorable(page.resolution)) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, page.resolution.x);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, page.resolution.y);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    if (count > 1) {
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        TIFFSetField(tiff, TIFFTAG_PAGENUMBER, static_cast<int>(index), static_cast<int>(count));
    }
    std::uint32_t stripRows = 0;
    TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &stripRows);
    const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff));
    Buffer strip;  // written as a whole, which libtiff packs faster than row by row
    strip.reserve(rowBytes * std::min<std::size_t>(stripRows, static_cast<std::size_t>(image.Height())));
    std::uint32_t number = 0;
    for (int y = 0; y < image.Height(); ++y) {
        const std::size_t start = strip.size();
        strip.insert(strip.end(), image.TopRow(y), image.TopRow(y) + rowBytes);
        if (isOneBit) {
            for (std::size_t i = start; i < strip.size(); ++i)
                strip[i] = static_cast<std::uint8_t>(~strip[i]);
        } else if (samples == 3) {
            for (std::size_t i = start; i < strip.size(); i += 3) std::swap(strip[i], strip[i + 2]);
        }
        const bool isFull = y + 1 == image.Height() || (static_cast<std::uint32_t>(y) + 1) % stripRows == 0;
        if (!isFull) continue;
        if (TIFFWriteEncodedStrip(tiff, number++, strip.data(), static_cast<tmsize_t>(strip.size())) < 0)
            return;
        strip.clear();
    }
    TIFFWriteDirectory(tiff);
}

Buffer EncodeTiff(const std::vector<Picture>& pages, Effort effort) {
    TiffMemory file({}, "w");
    for (std::size_t i = 0; i < pages.size() && file.Handle() != nullptr && !file.HasError(); ++i) {
        WriteTiffPage(file.Handle(), pages[i], i, pages.size(), effort);
    }
    if (file.Handle() == nullptr || file.HasError()) FailWriting(file.Reason());
    return file.Finish();
}

Buffer EncodePdf(const std::vector<Picture>& pages) {
    PdfDocument document;
    for (const Picture& page : pages) document.Add(page);
    return document.Finish();
}

// The picture's own block behind a file header.
Buffer EncodeBmp(const Picture& page) {
    constexpr std::uint32_t kFileHeaderBytes = 14;
    const DibRecord& record = page.image.Record();
    BITMAPINFOHEADER header = *record.header;
    header.biXPelsPerMeter =
        IsStorable(page.resolution) ? static_cast<std::int32_t>(DotsPerMetre(page.resolution.x)) : 0;
    header.biYPelsPerMeter =
        IsStorable(page.resolution) ? static_cast<std::int32_t>(DotsPerMetre(page.resolution.y)) : 0;
    const std::uint32_t tableBytes = 4 * header.biClrUsed;
    const std::uint32_t start = kFileHeaderBytes + header.biSize + tableBytes;
    Buffer buffer = {'B', 'M'};
    buffer.reserve(start + header.biSizeImage);
    for (const std::uint32_t field : {start + header.biSizeImage, 0u, start}) {
        for (int shift = 0; shift < 32; shift += 8)
            buffer.push_back(static_cast<std::uint8_t>(field >> shift));
    }
    const auto append = [&buffer](const void* from, std::size_t count) {
        const auto* bytes = static_cast<const std::uint8_t*>(from);
        buffer.insert(buffer.end(), bytes, bytes + count);
    };
    append(&header, header.biSize);
    append(record.palette, tableBytes);
    append(record.bits, header.biSizeImage);
    return buffer;
}

Buffer EncodePnm(const Picture& page) {
    const HostImage& image = page.image;
    const int bits = image.BitCount();
    const std::string head = std::string("P") +
                             (bits == 1   ? "4"
                              : bits == 8 ? "5"
                                          : "6") +
                             "\n" + std::to_string(image.Width()) + " " + std::to_string(image.Height()) +
                             (bits == 1 ? "\n" : "\n255\n");
    Buffer buffer(head.begin(), head.end());
    const std::size_t rowBytes = (static_cast<std::size_t>(bits) * image.Width() + 7) / 8;
    buffer.reserve(head.size() + rowBytes * image.Height());
    for (int y = 0; y < image.Height(); ++y) {
        const std::uint8_t* from = image.TopRow(y);
        const std::size_t start = buffer.size();
        buffer.insert(buffer.end(), from, from + rowBytes);
        std::uint8_t* row = buffer.data() + start;
        if (bits == 1) {
            for (std::size_t i = 0; i < rowBytes; ++i) row[i] = static_cast<std::uint8_t>(~row[i]);
            if (image.Width() % 8 != 0)
                row[rowBytes - 1] &= static_cast<std::uint8_t>(0xFF << (8 - image.Width() % 8));
        } else if (bits == 24) {
            for (std::size_t i = 0; i < rowBytes; i += 3) std::swap(row[i], row[i + 2]);
        }
    }
    return buffer;
}

}  // namespace

std::optional<Format> FormatOfName(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, Format>, 11> kExtensions = {{
        {".png", Format::kPng},
        {".jpg", Format::kJpeg},
        {".jpeg", Format::kJpeg},
        {".tif", Format::kTiff},
        {".tiff", Format::kTiff},
        {".bmp", Format::kBmp},
        {".pdf", Format::kPdf},
        {".pbm", Format::kPbm},
        {".pgm", Format::kPgm},
        {".ppm", Format::kPpm},
        {".pnm", Format::kPnm},
    }};
    const auto isSame = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    for (const auto& [extension, format] : kExtensions) {
        if (name.size() > extension.size() &&
            std::equal(extension.begin(), extension.end(),
                       name.end() - static_cast<std::ptrdiff_t>(extension.size()),
                       [&](char b, char a) { return isSame(a, b); })) {
            return format;
        }
    }
    return std::nullopt;
}

std::string Misfit(Format format, int bitCount) {
    const bool isHeld = format == Format::kJpeg  ? bitCount != 1
                        : format == Format::kPbm ? bitCount == 1
                        : format == Format::kPgm ? bitCount == 8
                        : format == Format::kPpm ? bitCount == 24
                                                 : true;
    if (isHeld) return {};
    const std::string kind = bitCount == 1 ? "1-bit" : bitCount == 8 ? "gray" : "colour";
    const std::string own = bitCount == 1 ? "pbm" : bitCount == 8 ? "pgm or jpg" : "ppm or jpg";
    return "this format does not hold " + kind + " pictures: take png, tif, pdf, bmp, pnm, " + own;
}

std::vector<std::uint8_t> EncodePictures(Format format, const std::vector<Picture>& pages, Effort effort) {
    for (const Picture& page : pages) {
        const std::string reason = Misfit(format, page.image.BitCount());
        if (!reason.empty()) FailWriting(reason);
    }
    if (format == Format::kTiff) return EncodeTiff(pages, effort);
    if (format == Format::kPdf) return EncodePdf(pages);
    if (pages.size() != 1) {
        FailWriting(
            "the input has " + std::to_string(pages.size()) +
            " pages and only TIFF and PDF hold several: write one of them, or name the files with {page}");
    }
    switch (format) {
        case Format::kPng: return EncodePng(pages[0], effort);
        case Format::kJpeg: return EncodeJpeg(pages[0]);
        case Format::kBmp: return EncodeBmp(pages[0]);
        default: return EncodePnm(pages[0]);
    }
}

}  // namespace host
