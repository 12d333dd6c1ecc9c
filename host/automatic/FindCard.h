// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "automatic/Conversion.h"
#include "operations/Findings.h"

// Where a host looks on a page in black and white.
namespace host {

// Lines are looked for among letters where those are known, the logo among the rest.
const HostImage& TextOf(const Conversion& page);
std::optional<Box> FindLogoOf(const Conversion& page);

}  // namespace host
