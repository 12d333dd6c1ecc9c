// SPDX-License-Identifier: MIT
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "picture/Exif.h"
#include "picture/Orientation.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr std::size_t kMostFromOneByte = 1032;  // what Deflate can make of a byte

struct Source {
    Bytes bytes;
    std::size_t at = 0;
    char error[128] = "";  // callbacks may not throw, as a string might
};

void ReadData(png_structp png, png_bytep to, std::size_t count) {
    auto& source = *static_cast<Source*>(png_get_io_ptr(png));
    if (count > source.bytes.size() - source.at) png_error(png, "the file is cut short");
    std::memcpy(to, source.bytes.data() + source.at, count);
    source.at += count;
}

void NoteError(png_structp png, png_const_charp text) {
    auto& source = *static_cast<Source*>(png_get_error_ptr(png));
    std::snprintf(source.error, sizeof source.error, "%s", text);
    png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

class Decoder {
  public:
    explicit Decoder(Bytes bytes) : source{bytes} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &source, NoteError, IgnoreWarning);
        info = png != nullptr ? png_create_info_struct(png) : nullptr;
        if (info == nullptr) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(png, &source, ReadData);
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // CheckSize words it better
    }
    ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    // The decoder leaves by longjmp: nothing between here and it may need a destructor.
    bool ReadInfo() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_read_info(png, info);
        return true;
    }

    // Asks for rows of the given depth: 1 bit, or 8 bits with one or three samples.
    bool ReadRows(int bitCount, png_bytepp rows, std::size_t rowBytes) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        if (bitCount != 1) {
            png_set_scale_16(png);
            png_set_expand(png);
            if (HasAlpha()) {
                png_color_16 white = {0, 255, 255, 255, 255};
                if (png_get_bit_depth(png, info) == 16) {
                    white.red = white.green = white.blue = white.gray = 0xFFFF;
                }
                png_set_background_fixed(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, PNG_FP_1);
            }
            if (bitCount == 8 && png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE) {
                png_set_rgb_to_gray_fixed(png, PNG_ERROR_ACTION_NONE, PNG_RGB_TO_GRAY_DEFAULT,
                                          PNG_RGB_TO_GRAY_DEFAULT);
            }
            if (bitCount == 24) png_set_bgr(png);
        }
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
        if (png_get_rowbytes(png, info) > rowBytes) png_error(png, "an unknown kind of pixel");
        png_read_image(png, rows);
        png_read_end(png, nullptr);
        return true;
    }

    bool HasAlpha() const {
        return (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
               png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    }

    // 1, 8 or 24: what the picture needs.
    int BitCount() const {
        if ((png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) == 0) {
            return png_get_bit_depth(png, info) == 1 && !HasAlpha() ? 1 : 8;
        }
        png_colorp palette = nullptr;
        int count = 0;
        if (png_get_PLTE(png, info, &palette, &count) == 0 ||
            png_get_color_type(png, info) != PNG_COLOR_TYPE_PALETTE) {
            return 24;
        }
        const bool isGray = std::all_of(palette, palette + count, [](const png_color& colour) {
            return colour.red == colour.green && colour.green == colour.blue;
        });
        if (!isGray) return 24;
        const bool isBlackWhite = png_get_bit_depth(png, info) == 1 && count == 2 && !HasAlpha() &&
                                  palette[0].red + palette[1].red == 255 &&
                                  (palette[0].red == 0 || palette[1].red == 0);
        return isBlackWhite ? 1 : 8;
    }

    // A 1-bit palette whose first colour is white.
    bool IsInverted() const {
        png_colorp palette = nullptr;
        int count = 0;
        return png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE &&
               png_get_PLTE(png, info, &palette, &count) != 0 && palette[0].red == 255;
    }

    // More pixels than the bytes of the file could hold.
    bool IsCutShort() const {
        return png_get_rowbytes(png, info) * png_get_image_height(png, info) / kMostFromOneByte >
               source.bytes.size();
    }

    int Width() const { return static_cast<int>(png_get_image_width(png, info)); }
    int Height() const { return static_cast<int>(png_get_image_height(png, info)); }
    Resolution PhysicalSize() const {
        return {png_get_x_pixels_per_meter(png, info) * kMetresPerInch,
                png_get_y_pixels_per_meter(png, info) * kMetresPerInch};
    }
    ExifFacts Exif() const {
        png_bytep block = nullptr;
        png_uint_32 size = 0;
        if (png_get_eXIf_1(png, info, &size, &block) == 0) return {};
        return ParseExif({block, size});
    }
    std::string Reason() const { return std::string("PNG: ") + source.error; }

  private:
    Source source;
    png_structp png;
    png_infop info;
};

}  // namespace

Picture ReadPng(Bytes bytes, std::int64_t maxPixels) {
    Decoder decoder(bytes);
    if (!decoder.ReadInfo()) FailReading(decoder.Reason());
    CheckSize(decoder.Width(), decoder.Height(), maxPixels);
    if (decoder.IsCutShort()) FailReading("PNG: the file is cut short");
    const int bitCount = decoder.BitCount();
    Picture picture{HostImage(decoder.Width(), decoder.Height(), bitCount), decoder.PhysicalSize()};
    const HostImage& image = picture.image;
    std::vector<png_bytep> rows(static_cast<std::size_t>(image.Height()));
    for (int y = 0; y < image.Height(); ++y) rows[static_cast<std::size_t>(y)] = image.TopRow(y);
    const ExifFacts exif = decoder.Exif();
    const bool isInverted = bitCount == 1 && decoder.IsInverted();
    if (!decoder.ReadRows(bitCount, rows.data(), image.RowBytes())) FailReading(decoder.Reason());
    if (isInverted) {
        for (std::uint32_t i = 0; i < image.Record().header->biSizeImage; ++i) image.Record().bits[i] ^= 0xFF;
    }
    if (!picture.resolution.IsKnown()) picture.resolution = exif.resolution;
    Orient(picture, exif.orientation);
    return picture;
}

}  // namespace host
