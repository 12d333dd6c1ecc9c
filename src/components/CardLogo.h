// SPDX-License-Identifier: MIT
#pragma once

#include "tavrix/tavrix.h"

namespace tavrix {

// The rectangle of the line that most likely holds the card's logo, in a store grouped into aligned blocks:
// the one with the largest component, unless that is as wide as a headline or stands alone in a line as
// large as a picture. All zero when there is none.
[[nodiscard]] LogoRect LogoOf(const ComponentStore& store, int pageWidth, int pageHeight);

}  // namespace tavrix
