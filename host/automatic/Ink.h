// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "automatic/AreaTree.h"

namespace host {

struct Ink {
    std::vector<bool> areas;  // those that are to be black
    int grounds = 0;          // dark areas that turned white because light letters stand on them
};

// Dark areas are ink, except where one carries light letters: there it is ground like paper, and the
// letters are the ink.
Ink ChooseInk(const AreaTree& tree, const std::vector<bool>& isLetter);

// Takes away what is no print: areas with a faint rim beside that of the letters (shadows, print from
// the other side), thick ones at the picture's edge (lid, desk), specks far from any letter. Nothing
// where there are hardly any letters. Returns how many areas went.
int DropDirt(const AreaTree& tree, const std::vector<bool>& isLetter, Ink& ink);

}  // namespace host
