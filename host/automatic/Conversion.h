// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automatic/Automatic.h"
#include "operations/Modes.h"
#include "picture/HostImage.h"

namespace host {

inline constexpr int kAutomaticScale = 0;

// How pictures become black and white.
struct ConversionOptions {
    Mode mode = kAutomaticMode;
    bool byBlocks = false;
    int scale = 1;  // the result's sides in those of the picture, or kAutomaticScale
};

// Whether a picture and its gray copy give the same: colours are enlarged before they become gray.
inline bool WorksOnGray(const ConversionOptions& options) {
    return options.scale == 1 || options.mode.number == kAutomaticMode.number;
}

struct Conversion {
    HostImage bits;
    HostImage letters;  // see AutomaticResult; empty under other modes
    int scale = 1;
    std::optional<AutomaticChoice> choice;  // of the automatic mode
    std::vector<std::string> warnings;      // what may have got lost, in plain words
};

Conversion ToBlackAndWhite(HostImage image, const ConversionOptions& options);

}  // namespace host
