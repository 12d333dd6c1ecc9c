// SPDX-License-Identifier: MIT
#include <webp/decode.h>
#include <webp/demux.h>

#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "picture/Exif.h"
#include "picture/Orientation.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

ExifFacts ExifOf(Bytes bytes) {
    constexpr char kMark[] = "Exif\0";  // six bytes with the closing zero; some writers put it first
    const WebPData data = {bytes.data(), bytes.size()};
    const std::unique_ptr<WebPDemuxer, void (*)(WebPDemuxer*)> chunks(WebPDemux(&data), WebPDemuxDelete);
    WebPChunkIterator chunk = {};
    ExifFacts facts;
    if (chunks && WebPDemuxGetChunk(chunks.get(), "EXIF", 1, &chunk) != 0) {
        Bytes block(chunk.chunk.bytes, chunk.chunk.size);
        if (block.size() > sizeof kMark && std::memcmp(block.data(), kMark, sizeof kMark) == 0) {
            block = block.subspan(sizeof kMark);
        }
        facts = ParseExif(block);
    }
    WebPDemuxReleaseChunkIterator(&chunk);
    return facts;
}

// Premultiplied colours over white. Both run from the bottom row to the top one.
void LayOnWhite(const std::vector<std::uint8_t>& from, const HostImage& to) {
    const std::uint8_t* pixel = from.data();
    for (int y = to.Height() - 1; y >= 0; --y) {
        std::uint8_t* row = to.TopRow(y);
        for (int x = 0; x < to.Width(); ++x, pixel += 4, row += 3) {
            for (int k = 0; k < 3; ++k) row[k] = static_cast<std::uint8_t>(pixel[k] + 255 - pixel[3]);
        }
    }
}

}  // namespace

Picture ReadWebp(Bytes bytes, std::int64_t maxPixels) {
    constexpr char kDamaged[] = "WebP data is damaged or cut short";
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0) throw std::bad_alloc();
    if (WebPGetFeatures(bytes.data(), bytes.size(), &config.input) != VP8_STATUS_OK) FailReading(kDamaged);
    if (config.input.has_animation != 0) FailReading("WebP: animations are not read");
    CheckSize(config.input.width, config.input.height, maxPixels);

    Picture picture{HostImage(config.input.width, config.input.height, 24), {}};
    const HostImage& image = picture.image;
    const bool hasAlpha = config.input.has_alpha != 0;
    const std::size_t rowBytes = hasAlpha ? std::size_t{4} * config.input.width : image.RowBytes();
    std::vector<std::uint8_t> transparent(hasAlpha ? rowBytes * image.Height() : 0);
    config.options.flip = 1;
    config.output.colorspace = hasAlpha ? MODE_bgrA : MODE_BGR;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {hasAlpha ? transparent.data() : image.Record().bits, static_cast<int>(rowBytes),
                            rowBytes * image.Height()};
    const VP8StatusCode status = WebPDecode(bytes.data(), bytes.size(), &config);
    if (status == VP8_STATUS_OUT_OF_MEMORY) throw std::bad_alloc();
    if (status != VP8_STATUS_OK) FailReading(kDamaged);
    if (hasAlpha) LayOnWhite(transparent, image);

    const ExifFacts exif = ExifOf(bytes);
    picture.resolution = exif.resolution;
    Orient(picture, exif.orientation);
    return picture;
}

}  // namespace host
