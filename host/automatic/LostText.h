// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "picture/HostImage.h"

namespace host {

// Says where a 1-bit result may have lost text of its gray picture: it is nearly blank, mostly black,
// many strong edges of the picture have no ink near them, or there is hardly any text, as who has looked for
// it tells by hasText. The result may be larger by a whole factor.
std::vector<std::string> WarningsFor(const HostImage& gray, const HostImage& bits, bool hasText);

}  // namespace host
