// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "picture/Orientation.h"
#include "picture/PictureReader.h"
#include "picture/TiffMemory.h"

namespace host {
namespace {

// The rows that libtiff converts to colour at a time are a multiple of this, which every subsampling divides.
constexpr std::uint32_t kBandRows = 64;
// A tile may reach beyond the picture, as small pictures have standard tiles, yet not by any amount.
constexpr std::int64_t kTilePixels = 1 << 20;
// What one allocation of libtiff may take for every pixel allowed: four components of two bytes.
constexpr std::int64_t kBytesPerPixel = 8;
constexpr std::int64_t kBytesAside = 64 << 20;

// Where a row of stored samples goes in the image.
class SampleWriter {
  public:
    // Gray levels or the colours of a palette, by index; 16 bits a sample count by their upper byte.
    SampleWriter(int sampleBits, std::array<RGBQUAD, 256> indexColours)
        : bits(sampleBits), colours(indexColours) {}
    // Red, green and blue of 8 or 16 bits.
    explicit SampleWriter(int sampleBits) : bits(sampleBits), isIndexed(false) {}

    // count samples into a row of 1, 8 or 24 bits, from column x on: a multiple of 8 for 1 bit.
    void Put(const std::uint8_t* from, const HostImage& image, int x, int y, int count) const {
        std::uint8_t* row = image.TopRow(y);
        if (image.BitCount() == 1) {
            const int flip = colours[0].rgbRed;
            for (int i = 0; i < (count + 7) / 8; ++i)
                row[x / 8 + i] = static_cast<std::uint8_t>(from[i] ^ flip);
        } else if (image.BitCount() == 8) {
            for (int i = 0; i < count; ++i) row[x + i] = colours[Index(from, i)].rgbRed;
        } else {
            row += 3 * x;
            for (int i = 0; i < count; ++i, row += 3) {
                const RGBQUAD colour = isIndexed ? colours[Index(from, i)] : Colour(from, 3 * i);
                row[0] = colour.rgbBlue;
                row[1] = colour.rgbGreen;
                row[2] = colour.rgbRed;
            }
        }
    }

  private:
    unsigned Index(const std::uint8_t* from, int i) const {
        if (bits == 8) return from[i];
        if (bits == 16) return reinterpret_cast<const std::uint16_t*>(from)[i] >> 8;
        return from[i * bits / 8] >> (8 - bits - i * bits % 8) & ((1u << bits) - 1);
    }

    RGBQUAD Colour(const std::uint8_t* from, int i) const {
        if (bits == 8) return {from[i + 2], from[i + 1], from[i], 0};
        const auto* wide = reinterpret_cast<const std::uint16_t*>(from) + i;
        const auto narrow = [](std::uint16_t sample) {
            return static_cast<std::uint8_t>((sample + 128) / 257);
        };
        return {narrow(wide[2]), narrow(wide[1]), narrow(wide[0]), 0};
    }

    int bits;
    bool isIndexed = true;
    std::array<RGBQUAD, 256> colours = {};
};

class TiffPages : public PictureReader {
  public:
    TiffPages(std::vector<std::uint8_t> bytes, std::int64_t most)
        : maxPixels(most),
          file(std::move(bytes), "r", kBytesPerPixel * most + kBytesAside),
          tiff(file.Handle()) {
        if (tiff == nullptr) FailReading(file.Reason());
    }

    std::optional<Picture> Next() override {
        if (isStarted && TIFFLastDirectory(tiff)) return std::nullopt;
        if (isStarted && !TIFFReadDirectory(tiff)) FailReading(file.Reason());
        isStarted = true;
        Picture page = ReadPage();
        Orient(page, Field(TIFFTAG_ORIENTATION));
        return page;
    }

  private:
    Picture ReadPage() {
        const std::uint32_t width = Number(TIFFTAG_IMAGEWIDTH);
        const std::uint32_t height = Number(TIFFTAG_IMAGELENGTH);
        CheckSize(width, height, maxPixels);
        CheckTiles(std::int64_t{width} * height);
        file.ForgetErrors();  // a bad tag is no reason to refuse good pixels
        if (IsCompressedColour()) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        const std::optional<SampleWriter> writer = WriterOfPage();
        const int photometric = Field(TIFFTAG_PHOTOMETRIC);
        const bool isGray = photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK;
        const bool isOneBit = isGray && writer && Field(TIFFTAG_BITSPERSAMPLE) == 1;
        Picture page{HostImage(static_cast<int>(width), static_cast<int>(height),
                               isOneBit ? 1
                               : isGray ? 8
                                        : 24),
                     ReadResolution()};
        if (!writer) {
            ReadThroughColour(page.image);
        } else if (TIFFIsTiled(tiff)) {
            ReadTiles(page.image, *writer);
        } else {
            ReadRows(page.image, *writer);
        }
        return page;
    }

    void CheckTiles(std::int64_t pixels) {
        if (!TIFFIsTiled(tiff)) return;
        const std::int64_t tile = std::int64_t{Number(TIFFTAG_TILEWIDTH)} * Number(TIFFTAG_TILELENGTH);
        if (tile <= 0 || tile > std::max(2 * pixels, kTilePixels)) FailReading("TIFF: a damaged tile size");
    }

    // JPEG strips in YCbCr, which the decoder turns to red, green and blue itself.
    bool IsCompressedColour() const {
        return Field(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG &&
               Field(TIFFTAG_PHOTOMETRIC) == PHOTOMETRIC_YCBCR &&
               Field(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG;
    }

    // For pages whose samples can be taken as they are stored; nothing for other kinds.
    std::optional<SampleWriter> WriterOfPage() const {
        const int bits = Field(TIFFTAG_BITSPERSAMPLE);
        const int samples = Field(TIFFTAG_SAMPLESPERPIXEL);
        const int photometric = Field(TIFFTAG_PHOTOMETRIC);
        const bool isUnsigned = Field(TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_UINT;
        if (!isUnsigned || (TIFFIsTiled(tiff) && Number(TIFFTAG_TILEWIDTH) % 8 != 0)) return std::nullopt;
        if (samples == 3 && (bits == 8 || bits == 16) && Field(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG &&
            (photometric == PHOTOMETRIC_RGB || IsCompressedColour())) {
            return SampleWriter(bits);
        }
        constexpr std::array kDepths = {1, 2, 4, 8, 16};
        if (samples != 1 || std::find(kDepths.begin(), kDepths.end(), bits) == kDepths.end()) {
            return std::nullopt;
        }
        const unsigned last = (1u << std::min(bits, 8)) - 1;
        std::array<RGBQUAD, 256> colours = {};
        std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
        if (photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK) {
            for (unsigned i = 0; i <= last; ++i) {
                const auto level = static_cast<std::uint8_t>(
                    (photometric == PHOTOMETRIC_MINISBLACK ? i : last - i) * 255 / last);
                colours[i] = {level, level, level, 0};
            }
            return SampleWriter(bits, colours);
        }
        if (photometric != PHOTOMETRIC_PALETTE || bits > 8 ||
            !TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue)) {
            return std::nullopt;
        }
        // Colours of 16 bits, unless an old writer has left the upper bytes empty.
        const auto isWide = [last](const std::uint16_t* map) {
            return std::any_of(map, map + last + 1, [](std::uint16_t value) { return value > 255; });
        };
        const int shift = isWide(red) || isWide(green) || isWide(blue) ? 8 : 0;
        for (unsigned i = 0; i <= last; ++i) {
            colours[i] = {static_cast<std::uint8_t>(blue[i] >> shift),
                          static_cast<std::uint8_t>(green[i] >> shift),
                          static_cast<std::uint8_t>(red[i] >> shift), 0};
        }
        return SampleWriter(bits, colours);
    }

    void ReadRows(const HostImage& image, const SampleWriter& writer) {
        std::vector<std::uint16_t> row(RowBytes(TIFFScanlineSize(tiff), image.Width()) / 2 + 1);
        auto* samples = reinterpret_cast<std::uint8_t*>(row.data());
        for (int y = 0; y < image.Height(); ++y) {
            const int outcome = TIFFReadScanline(tiff, samples, static_cast<std::uint32_t>(y), 0);
            if (outcome < 0 || file.HasError()) FailReading(file.Reason());
            writer.Put(samples, image, 0, y, image.Width());
        }
    }

    void ReadTiles(const HostImage& image, const SampleWriter& writer) {
        const int tileWidth = static_cast<int>(Number(TIFFTAG_TILEWIDTH));
        const int tileHeight = static_cast<int>(Number(TIFFTAG_TILELENGTH));
        const std::size_t rowBytes = RowBytes(TIFFTileRowSize(tiff), tileWidth);
        std::vector<std::uint16_t> tile(static_cast<std::size_t>(TIFFTileSize(tiff)) / 2 + 1);
        auto* samples = reinterpret_cast<std::uint8_t*>(tile.data());
        for (int top = 0; top < image.Height(); top += tileHeight) {
            for (int left = 0; left < image.Width(); left += tileWidth) {
                const tmsize_t got = TIFFReadTile(tiff, samples, static_cast<std::uint32_t>(left),
                                                  static_cast<std::uint32_t>(top), 0, 0);
                if (got < 0 || file.HasError()) FailReading(file.Reason());
                const int count = std::min(tileWidth, image.Width() - left);
                for (int y = top; y < std::min(top + tileHeight, image.Height()); ++y) {
                    writer.Put(samples + rowBytes * static_cast<std::size_t>(y - top), image, left, y, count);
                }
            }
        }
    }

    // libtiff's size of a row, which must hold the pixels.
    std::size_t RowBytes(tmsize_t size, int width) const {
        const std::int64_t bits =
            std::int64_t{width} * Field(TIFFTAG_BITSPERSAMPLE) * Field(TIFFTAG_SAMPLESPERPIXEL);
        if (size < (bits + 7) / 8) FailReading(file.Reason());
        return static_cast<std::size_t>(size);
    }

    // Any other kind of picture: libtiff converts it to red, green, blue and premultiplied alpha, a strip
    // or a row of tiles at a time, or a part of one that is long.
    void ReadThroughColour(const HostImage& image) {
        char reason[1024] = "";
        TIFFRGBAImage converter = {};
        if (!TIFFRGBAImageOK(tiff, reason) || !TIFFRGBAImageBegin(&converter, tiff, 1, reason)) {
            FailReading(std::string("TIFF: ") + reason);
        }
        const std::unique_ptr<TIFFRGBAImage, void (*)(TIFFRGBAImage*)> owner(&converter, TIFFRGBAImageEnd);
        converter.req_orientation = converter.orientation;  // rows as they are stored
        const std::uint32_t most = std::max(converter.height / 8 / kBandRows, 1u) * kBandRows;
        const std::uint32_t bandRows =
            std::clamp(Number(TIFFIsTiled(tiff) ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP), 1u, most);
        std::vector<std::uint32_t> pixels(std::size_t{converter.width} * bandRows);
        for (std::uint32_t top = 0; top < converter.height; top += bandRows) {
            const std::uint32_t rows = std::min(bandRows, converter.height - top);
            converter.row_offset = static_cast<int>(top);
            if (!TIFFRGBAImageGet(&converter, pixels.data(), converter.width, rows) || file.HasError()) {
                FailReading(file.Reason());
            }
            for (std::uint32_t y = 0; y < rows; ++y) {
                PutOnWhite(pixels.data() + std::size_t{y} * converter.width, image,
                           static_cast<int>(top + y));
            }
        }
    }

    static void PutOnWhite(const std::uint32_t* from, const HostImage& image, int y) {
        std::uint8_t* to = image.TopRow(y);
        for (int x = 0; x < image.Width(); ++x, ++from) {
            const std::uint32_t white = 255 - TIFFGetA(*from);  // the paper that shows through
            if (image.BitCount() == 24) {
                *to++ = static_cast<std::uint8_t>(TIFFGetB(*from) + white);
                *to++ = static_cast<std::uint8_t>(TIFFGetG(*from) + white);
            }
            *to++ = static_cast<std::uint8_t>(TIFFGetR(*from) + white);
        }
    }

    Resolution ReadResolution() const {
        float x = 0;
        float y = 0;
        TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
        const int unit = Field(TIFFTAG_RESOLUTIONUNIT);
        const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 0;
        return {x * scale, y * scale};
    }

    int Field(std::uint32_t tag) const {
        std::uint16_t value = 0;
        TIFFGetFieldDefaulted(tiff, tag, &value);
        return value;
    }

    std::uint32_t Number(std::uint32_t tag) const {
        std::uint32_t value = 0;
        TIFFGetFieldDefaulted(tiff, tag, &value);
        return value;
    }

    std::int64_t maxPixels;
    TiffMemory file;
    TIFF* tiff;
    bool isStarted = false;
};

}  // namespace

std::unique_ptr<PictureReader> ReadTiffPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels) {
    return std::make_unique<TiffPages>(std::move(bytes), maxPixels);
}

}  // namespace host
