// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "picture/Picture.h"

namespace host {

using Bytes = std::span<const std::uint8_t>;

// Whether who reads a picture needs its colours. Where not, a decoder may leave out their pass through memory
// and give what ToGray makes of them.
enum class Colours { kNeeded, kNotNeeded };

// The decoders; each throws PictureError with a reason in plain words. A page of more than maxPixels is
// refused before memory is spent on it; others take the picture and at most one working copy of it.
Picture ReadPng(Bytes bytes, std::int64_t maxPixels);
Picture ReadJpeg(Bytes bytes, std::int64_t maxPixels, Colours colours);
Picture ReadBmp(Bytes bytes, std::int64_t maxPixels);
Picture ReadWebp(Bytes bytes, std::int64_t maxPixels);

// The formats that this build reads, for people.
inline constexpr char kReadFormats[] =
    "PNG, JPEG, TIFF, BMP, PNM"
#ifdef TAVRIX_READS_WEBP
    ", WebP"
#endif
#ifdef TAVRIX_READS_HEIF
    ", HEIC, AVIF"
#endif
    ;

// The pages of one picture file, which is known by its content, whatever its name says. Pages are 1, 8
// or 24 bits: alpha lies on white, 16 bits a sample are reduced to 8, a stored orientation is applied.
class PictureReader {
  public:
    virtual ~PictureReader() = default;
    // Nothing after the last page.
    virtual std::optional<Picture> Next() = 0;
};

std::unique_ptr<PictureReader> ReadTiffPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels);
std::unique_ptr<PictureReader> ReadPnmPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels);
std::unique_ptr<PictureReader> ReadHeifPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels);

// path: a file, or "-" for standard input.
std::unique_ptr<PictureReader> OpenPicture(const std::string& path, std::int64_t maxPixels,
                                           Colours colours = Colours::kNeeded);

// Whether the file starts like one of the formats; true as well for what cannot be read, which is to be told.
bool LooksLikePicture(const std::string& path);

// The number of a field of a file, most or least significant byte first.
std::uint32_t BigEndian(Bytes bytes, std::size_t at, std::size_t size);
std::uint32_t LittleEndian(Bytes bytes, std::size_t at, std::size_t size);

}  // namespace host
