// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "automatic/AreaTree.h"

namespace host {

// Which areas look like letters: of a letter's size and shape, with another one of like height beside
// it on the same line and in the same area around them. Light ones count as dark ones do.
std::vector<bool> FindLetters(const AreaTree& tree);

// The middle one of the letters' heights, for those of the areas that are marked in both; 0 where there are
// fewer than kFewLetters.
int TypicalHeight(const AreaTree& tree, const std::vector<bool>& isLetter, const std::vector<bool>& isInk);

// Fewer letters than that may well be chance.
inline constexpr std::size_t kFewLetters = 4;

}  // namespace host
