// SPDX-License-Identifier: MIT
#include "picture/Scaling.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>

#include "picture/Picture.h"

namespace host {
namespace {

cv::Mat MatOf(const HostImage& image) {
    return {image.Height(), image.Width(), image.BitCount() == 8 ? CV_8UC1 : CV_8UC3, image.Record().bits,
            image.RowBytes()};
}

int ScaledSide(int side, double factor) {
    const double scaled = std::max(1.0, std::round(side * factor));
    if (scaled > static_cast<double>(kMaxSide)) {
        throw PictureError(PictureError::kFailed, "a side of " + std::to_string(side) +
                                                      " pixels cannot be enlarged: at most " +
                                                      std::to_string(kMaxSide) + " pixels are possible");
    }
    return static_cast<int>(scaled);
}

}  // namespace

HostImage Scaled(HostImage image, double factor) {
    if (image.BitCount() == 1) image = ToGray(std::move(image));
    if (factor == 1) return image;
    HostImage scaled(ScaledSide(image.Width(), factor), ScaledSide(image.Height(), factor), image.BitCount());
    cv::setNumThreads(1);  // threads are one to a picture
    cv::Mat target = MatOf(scaled);
    cv::resize(MatOf(image), target, target.size(), 0, 0, factor > 1 ? cv::INTER_CUBIC : cv::INTER_AREA);
    return scaled;
}

}  // namespace host
