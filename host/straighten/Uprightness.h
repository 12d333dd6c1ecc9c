// SPDX-License-Identifier: MIT
#pragma once

#include "picture/HostImage.h"

namespace host {

// What level rows of letters say about which way up a picture is.
struct Uprightness {
    int letters = 0;     // close to the next one in long rows; none where there is no text
    double surplus = 0;  // of letters for upright (above 0) over those for upside down, in standard
                         // deviations; 0 where they do not agree well
};

Uprightness UprightnessOf(const HostImage& gray);

}  // namespace host
