// SPDX-License-Identifier: MIT
#include <csetjmp>
#include <cstring>
#include <string>
#include <vector>

#include "picture/Exif.h"
#include "picture/GrayRow.h"
#include "picture/JpegLibrary.h"
#include "picture/Orientation.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr char kExifMark[] = "Exif\0";  // six bytes with the closing zero
constexpr std::size_t kExifMarkBytes = sizeof kExifMark;
constexpr unsigned kMarkerBytesMax = 0xFFFF;
// Every scan of a progressive file costs a pass over the picture; encoders write about ten.
constexpr int kScansMax = 500;
// What the decoder may need to keep of a picture: four components of two bytes, and a row of blocks.
constexpr long kBytesPerPixel = 8;
constexpr long kBytesAside = 64 << 20;
// Rows that start at such an address stay in the cache: libjpeg-turbo writes those that are aligned past it.
constexpr std::size_t kUneven = 8;

struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf escape;
    bool isDamaged = false;
    bool hasTooManyScans = false;
};

ErrorManager& ManagerOf(j_common_ptr jpeg) {
    return *reinterpret_cast<ErrorManager*>(jpeg->err);
}

[[noreturn]] void Escape(j_common_ptr jpeg) {
    std::longjmp(ManagerOf(jpeg).escape, 1);
}

// Of the decoder's warnings those count that mean missing pixels: one is enough to give the file up.
void NoteWarning(j_common_ptr jpeg, int level) {
    if (level >= 0) return;
    switch (jpeg->err->msg_code) {
        case JWRN_JPEG_EOF:
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_MUST_RESYNC: ManagerOf(jpeg).isDamaged = true; Escape(jpeg);
        default: break;
    }
}

void CountScans(j_common_ptr jpeg) {
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number <= kScansMax) return;
    ManagerOf(jpeg).hasTooManyScans = true;
    Escape(jpeg);
}

class Decoder {
  public:
    Decoder() {
        jpeg.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = Escape;
        errors.base.emit_message = NoteWarning;
        scanCounter.progress_monitor = CountScans;
    }
    ~Decoder() { jpeg_destroy_decompress(&jpeg); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    // The decoder leaves by longjmp: nothing between here and it may need a destructor.
    bool Start(Bytes bytes) {
        if (setjmp(errors.escape) != 0) return false;
        jpeg_create_decompress(&jpeg);
        jpeg.progress = &scanCounter;
        jpeg_mem_src(&jpeg, bytes.data(), bytes.size());
        jpeg_save_markers(&jpeg, JPEG_APP0 + 1, kMarkerBytesMax);
        jpeg_read_header(&jpeg, TRUE);
        const bool hasFourInks = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
        jpeg.out_color_space = hasFourInks                ? JCS_CMYK
                               : jpeg.num_components == 1 ? JCS_GRAYSCALE
                                                          : JCS_EXT_BGR;
        return true;
    }

    // aside: room for a row as it is decoded where the image holds it in another form, else null.
    bool ReadRows(const HostImage& image, JSAMPROW aside) {
        if (setjmp(errors.escape) != 0) return false;
        jpeg.mem->max_memory_to_use = kBytesPerPixel * image.Width() * image.Height() + kBytesAside;
        jpeg_start_decompress(&jpeg);
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = image.TopRow(static_cast<int>(jpeg.output_scanline));
            jpeg_read_scanlines(&jpeg, aside != nullptr ? &aside : &row, 1);
            if (aside == nullptr) continue;
            if (image.BitCount() == 8) {
                ToGrayRow(aside, image.Width(), row);
            } else {
                ConvertInks(aside, row);
            }
        }
        return true;
    }

    std::string Reason() {
        if (errors.isDamaged) return "JPEG data is damaged or cut short";
        if (errors.hasTooManyScans) return "JPEG: more than " + std::to_string(kScansMax) + " scans";
        char text[JMSG_LENGTH_MAX];
        errors.base.format_message(reinterpret_cast<j_common_ptr>(&jpeg), text);
        return std::string("JPEG: ") + text;
    }

    ExifFacts Exif() const {
        for (const jpeg_marker_struct* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
            if (marker->data_length > kExifMarkBytes &&
                std::memcmp(marker->data, kExifMark, kExifMarkBytes) == 0) {
                return ParseExif({marker->data + kExifMarkBytes, marker->data_length - kExifMarkBytes});
            }
        }
        return {};
    }

    Resolution JfifResolution() const {
        const double unit = jpeg.density_unit == 1 ? 1 : jpeg.density_unit == 2 ? kCentimetresPerInch : 0;
        return {jpeg.X_density * unit, jpeg.Y_density * unit};
    }

    const jpeg_decompress_struct& Info() const { return jpeg; }

  private:
    // Files of this kind hold the inks inverted when they carry Adobe's marker, as nearly all do.
    void ConvertInks(const std::uint8_t* inks, std::uint8_t* row) const {
        const int flip = jpeg.saw_Adobe_marker ? 0 : 255;
        for (unsigned x = 0; x < jpeg.output_width; ++x, inks += 4, row += 3) {
            const int light = inks[3] ^ flip;
            for (int k = 0; k < 3; ++k)
                row[k] = static_cast<std::uint8_t>((inks[2 - k] ^ flip) * light / 255);
        }
    }

    jpeg_decompress_struct jpeg = {};  // destroying one that was never created does nothing
    ErrorManager errors = {};
    jpeg_progress_mgr scanCounter = {};
};

}  // namespace

Picture ReadJpeg(Bytes bytes, std::int64_t maxPixels, Colours colours) {
    Decoder decoder;
    if (!decoder.Start(bytes)) FailReading(decoder.Reason());
    const jpeg_decompress_struct& info = decoder.Info();
    CheckSize(info.image_width, info.image_height, maxPixels);
    const bool hasFourInks = info.out_color_space == JCS_CMYK;
    const bool becomesGray = info.out_color_space == JCS_EXT_BGR && colours == Colours::kNotNeeded;
    Picture picture{HostImage::Unset(static_cast<int>(info.image_width), static_cast<int>(info.image_height),
                                     info.num_components == 1 || becomesGray ? 8 : 24),
                    decoder.JfifResolution()};
    const std::size_t samples = hasFourInks ? 4 : becomesGray ? 3 : 0;
    std::vector<std::uint8_t> aside(samples * info.image_width + kUneven);
    if (!decoder.ReadRows(picture.image, samples != 0 ? aside.data() + kUneven : nullptr))
        FailReading(decoder.Reason());
    const ExifFacts exif = decoder.Exif();
    if (!picture.resolution.IsKnown()) picture.resolution = exif.resolution;
    Orient(picture, exif.orientation);
    return picture;
}

}  // namespace host
