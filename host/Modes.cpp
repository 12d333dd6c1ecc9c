// SPDX-License-Identifier: MIT
#include "Modes.h"

#include <string>

namespace tavrix::host {

std::optional<Mode> FindMode(std::string_view text) {
    for (const Mode& mode : kModes) {
        if (text == mode.name || text == std::to_string(mode.number)) return mode;
    }
    return std::nullopt;
}

}  // namespace tavrix::host
