// SPDX-License-Identifier: MIT
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "picture/Orientation.h"
#include "picture/PictureReader.h"
#include "picture/TiffMemory.h"

namespace host {
namespace {

class TiffPages : public PictureReader {
  public:
    explicit TiffPages(std::vector<std::uint8_t> bytes) : file(std::move(bytes), "r"), tiff(file.Handle()) {
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
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
        CheckSides(width, height);
        file.ForgetErrors();  // a bad tag is no reason to refuse good pixels
        const int photometric = Field(TIFFTAG_PHOTOMETRIC);
        const bool isGray = photometric == PHOTOMETRIC_MINISWHITE || photometric == PHOTOMETRIC_MINISBLACK;
        const int bits = Field(TIFFTAG_BITSPERSAMPLE);
        const bool isPlain = isGray && Field(TIFFTAG_SAMPLESPERPIXEL) == 1 && !TIFFIsTiled(tiff);
        const bool isOneBit = isPlain && bits == 1;
        Picture page{HostImage(static_cast<int>(width), static_cast<int>(height),
                               isOneBit ? 1
                               : isGray ? 8
                                        : 24),
                     ReadResolution()};
        if (isOneBit || (isPlain && bits == 8)) {
            ReadRows(page.image, photometric == PHOTOMETRIC_MINISWHITE);
        } else {
            ReadThroughColour(page.image);
        }
        return page;
    }

    void ReadRows(const HostImage& image, bool isInverted) {
        std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
        const std::size_t rowBytes = (static_cast<std::size_t>(image.BitCount()) * image.Width() + 7) / 8;
        if (row.size() < rowBytes) FailReading(file.Reason());
        const int flip = isInverted ? 0xFF : 0;
        for (int y = 0; y < image.Height(); ++y) {
            const int outcome = TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0);
            if (outcome < 0 || file.HasError()) FailReading(file.Reason());
            std::uint8_t* to = image.TopRow(y);
            for (std::size_t i = 0; i < rowBytes; ++i) to[i] = static_cast<std::uint8_t>(row[i] ^ flip);
        }
    }

    // Any other kind of picture: libtiff converts it to red, green, blue and premultiplied alpha.
    void ReadThroughColour(const HostImage& image) {
        char reason[1024] = "";
        TIFFRGBAImage converter = {};
        if (!TIFFRGBAImageOK(tiff, reason) || !TIFFRGBAImageBegin(&converter, tiff, 1, reason)) {
            FailReading(std::string("TIFF: ") + reason);
        }
        converter.req_orientation = converter.orientation;  // rows as they are stored
        std::vector<std::uint32_t> pixels;
        bool isRead = false;
        try {
            pixels.resize(std::size_t{converter.width} * converter.height);
            isRead = TIFFRGBAImageGet(&converter, pixels.data(), converter.width, converter.height) != 0;
        } catch (const std::bad_alloc&) {
            TIFFRGBAImageEnd(&converter);
            throw;
        }
        TIFFRGBAImageEnd(&converter);
        if (!isRead || file.HasError()) FailReading(file.Reason());
        const std::uint32_t* from = pixels.data();
        for (int y = 0; y < image.Height(); ++y) {
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

    TiffMemory file;
    TIFF* tiff;
    bool isStarted = false;
};

}  // namespace

std::unique_ptr<PictureReader> ReadTiffPages(std::vector<std::uint8_t> bytes) {
    return std::make_unique<TiffPages>(std::move(bytes));
}

}  // namespace host
