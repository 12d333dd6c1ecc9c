// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "operations/Findings.h"
#include "picture/HostImage.h"

namespace host {

// The logo on a card in black and white: of the groups of marks that are no text the one with the most ink
// (docs/modes.md has the rules).
std::optional<Box> FindLogoMark(const HostImage& bits);

}  // namespace host
