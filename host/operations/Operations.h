// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

#include "operations/Findings.h"
#include "operations/Modes.h"
#include "picture/HostImage.h"

// The library's functions on host images, in top-down coordinates. A refusal throws PictureError of
// kind kFailed.
namespace host {

// A 1-bit picture; one that is 1-bit already comes back as it was. byBlocks: the block-wise variant of
// the mode, for colour by way of gray.
HostImage Binarize(HostImage image, const Mode& mode, bool byBlocks = false);

// Turns by any angle, clockwise as seen; negative angles turn the other way. Multiples of 90 degrees
// are exact. Other angles interpolate on white, 1-bit pictures as gray ones.
HostImage Rotate(HostImage image, double degrees);

// Cuts a box out of a 1-bit picture and turns it by one of RotateImageBlock's codes.
HostImage TurnBlock(const HostImage& image, const Box& box, int code);

// The white margin of CopyImgWithWhiteSurr around a 1-bit picture.
HostImage Pad(HostImage image);

// One of Morphology's operations on a picture of a suitable depth.
HostImage RunMorphology(HostImage image, int operation);

struct ExtractOptions {
    int growX = 0;
    int growY = 0;
    std::optional<std::pair<int, int>> noise;  // delete components of at most this width and height
    bool filtersLineNoise = false;             // delete by comparison with the line's mean size
    std::optional<int> grouping;               // 0 along the text, 1 aligned
};

// Components of at most this width and height never belong to print.
inline constexpr int kSpeckSide = 2;

// Whether the picture has more components than a store holds; the others are not seen by the operations
// below.
bool ExceedsStore(const HostImage& image);

// The operations on components, each on 1-bit pictures and on a store of its own.
std::vector<FoundBlock> FindComponents(const HostImage& image, const ExtractOptions& options);
// extra: see Grouping.
std::vector<FoundLine> FindLines(const HostImage& image, const GroupingOptions& options, unsigned extra);
std::optional<Box> FindTrueLine(const HostImage& image, const GroupingOptions& options);
std::optional<Box> FindLogo(const HostImage& image);

}  // namespace host
