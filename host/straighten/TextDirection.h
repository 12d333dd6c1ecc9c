// SPDX-License-Identifier: MIT
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace host {

// How to turn a picture so that its text lines run level and upright, clockwise: by quarters, then by less
// than a few degrees. Both 0 where the text does not clearly say otherwise.
struct TextDirection {
    int quarters = 0;
    double degrees = 0;
};

// gray: top row first.
TextDirection FindTextDirection(const cv::Mat1b& gray);

}  // namespace host
