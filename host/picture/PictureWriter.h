// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "picture/Picture.h"

namespace host {

// kPnm is whichever of the three before it suits the picture.
enum class Format { kPng, kJpeg, kTiff, kPdf, kBmp, kPbm, kPgm, kPpm, kPnm };

// By the extension of a name, upper or lower case; nothing for an unknown one.
std::optional<Format> FormatOfName(std::string_view name);
// The extensions that FormatOfName knows, for messages.
inline constexpr char kFormatNames[] = "png, tif, tiff, pdf, bmp, pbm, pgm, ppm, pnm, jpg or jpeg";

// Why a format cannot hold a picture of that many bits a pixel, and what can; empty where it can.
std::string Misfit(Format format, int bitCount);

// How long gray and colour pictures are packed: for keeping, or for looking at once.
enum class Effort { kSmall, kQuick };

// A whole file. TIFF (1 bit: CCITT G4; gray and colour: Deflate) and PDF (CCITT G4; JPEG) take any number of
// pages, the others one. An unknown resolution is left out. Throws PictureError where the format cannot hold
// the pages.
std::vector<std::uint8_t> EncodePictures(Format format, const std::vector<Picture>& pages,
                                         Effort effort = Effort::kSmall);
// One gray or colour picture.
std::vector<std::uint8_t> EncodeJpeg(const Picture& page);

}  // namespace host
