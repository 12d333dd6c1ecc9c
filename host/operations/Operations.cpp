// SPDX-License-Identifier: MIT
#include "operations/Operations.h"

#include <cmath>
#include <string>
#include <utility>

#include "picture/Picture.h"

namespace host {
namespace {

constexpr int kQuarter = 90;  // degrees

void Check(bool isDone, const std::string& operation) {
    if (!isDone) throw PictureError(PictureError::kFailed, operation + " refused the picture");
}

HostImage TurnGrayQuarter(const HostImage& image) {
    DibRecord result = {};
    Check(RotateGrayImage(image.Handle(), kQuarter, &result) == 1, "RotateGrayImage");
    return HostImage(result);
}

// The library turns gray pictures: each colour goes through as one.
HostImage TurnColourQuarter(const HostImage& image) {
    HostImage turned(image.Height(), image.Width(), 24);
    HostImage plane(image.Width(), image.Height(), 8);
    for (int k = 0; k < 3; ++k) {
        for (int y = 0; y < image.Height(); ++y) {
            const std::uint8_t* from = image.TopRow(y) + k;
            std::uint8_t* to = plane.TopRow(y);
            for (int x = 0; x < image.Width(); ++x) to[x] = from[3 * x];
        }
        const HostImage turnedPlane = TurnGrayQuarter(plane);
        for (int y = 0; y < turned.Height(); ++y) {
            const std::uint8_t* from = turnedPlane.TopRow(y);
            std::uint8_t* to = turned.TopRow(y) + k;
            for (int x = 0; x < turned.Width(); ++x) to[3 * x] = from[x];
        }
    }
    return turned;
}

// quarters: 1 to 3, clockwise.
HostImage TurnQuarters(HostImage image, int quarters) {
    if (image.BitCount() == 1) {
        return TurnBlock(image, {0, 0, image.Width() - 1, image.Height() - 1}, quarters);
    }
    for (int i = 0; i < quarters; ++i) {
        image = image.BitCount() == 8 ? TurnGrayQuarter(image) : TurnColourQuarter(image);
    }
    return image;
}

}  // namespace

HostImage Binarize(HostImage image, const Mode& mode, bool byBlocks) {
    if (image.BitCount() == 1) return image;
    DibRecord result = {};
    if (byBlocks) {
        image = ToGray(std::move(image));
        Check(Binarized_Separate_Block(image.Handle(), &result, mode.number) == 1,
              "Binarized_Separate_Block");
    } else {
        Check(Binarized(image.Handle(), &result, mode.number) == 1, "Binarized");
    }
    return HostImage(result);
}

HostImage Rotate(HostImage image, double degrees) {
    const double quarters = std::trunc(degrees / kQuarter);
    const double rest = degrees - quarters * kQuarter;
    const int turns = static_cast<int>(std::fmod(quarters, 4) + 4) % 4;
    if (turns != 0) image = TurnQuarters(std::move(image), turns);
    if (rest == 0) return image;
    if (image.BitCount() == 1) image = ToGray(std::move(image));
    DibRecord result = {};
    Check(RotateImageFree(image.Handle(), std::fabs(rest), rest > 0, &result) == 1, "RotateImageFree");
    return HostImage(result);
}

HostImage TurnBlock(const HostImage& image, const Box& box, int code) {
    const auto row = [&image](int y) { return static_cast<std::int16_t>(image.Height() - 1 - y); };
    const BlockRect block = {static_cast<std::int16_t>(box.left), row(box.top),
                             static_cast<std::int16_t>(box.right), row(box.bottom), 0};
    DibRecord result = {};
    Check(RotateImageBlock(image.Record(), block, code, &result) == 1, "RotateImageBlock");
    return HostImage(result);
}

HostImage Pad(HostImage image) {
    const int width = image.Width();
    DibRecord record = image.Release();
    std::int32_t marginSteps = 0;
    CopyImgWithWhiteSurr(&record, &marginSteps);
    HostImage padded(record);
    Check(padded.Width() > width, "CopyImgWithWhiteSurr");
    return padded;
}

HostImage RunMorphology(HostImage image, int operation) {
    DibRecord result = {};
    Check(Morphology(image.Handle(), &result, operation) == 1, "Morphology");
    return HostImage(result);
}

}  // namespace host
