// SPDX-License-Identifier: MIT
#include "operations/Modes.h"

#include <string>

namespace host {

std::optional<Mode> FindMode(std::string_view text) {
    if (text == kAutomaticMode.name) return kAutomaticMode;
    for (const Mode& mode : kModes) {
        if (text == mode.name || text == std::to_string(mode.number)) return mode;
    }
    return std::nullopt;
}

}  // namespace host
