// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automatic/AreaTree.h"
#include "picture/HostImage.h"

namespace host {

// Says where a 1-bit result may have lost text of its gray picture: it is nearly blank, mostly black, many
// letters that stand in rows have no ink, or there are hardly any. The result may be larger by a whole
// factor. textLetters: those letters as places of the result, from who has looked for them; others are looked
// for only where many strong edges of the picture have no ink near them.
std::vector<std::string> WarningsFor(const HostImage& gray, const HostImage& bits,
                                     const std::optional<std::vector<Area>>& textLetters);

}  // namespace host
