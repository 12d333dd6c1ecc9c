// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "automatic/Conversion.h"
#include "picture/Picture.h"

namespace host {

// One page under one mode.
struct Trial {
    Mode mode;
    Conversion conversion;
    double blackShare;       // 0 to 1
    std::size_t components;  // 8-connected
    double milliseconds;     // of the binarization
};

struct ComparedPage {
    Picture picture;
    std::vector<Trial> trials;
};

// Binarizes the page under every mode, one after the other; a 1-bit page is left without trials.
ComparedPage ComparePage(Picture picture);

// A page of HTML that needs nothing beside it: the picture and its trials side by side.
std::string ComposeSheet(const std::string& file, const std::vector<ComparedPage>& pages);

}  // namespace host
