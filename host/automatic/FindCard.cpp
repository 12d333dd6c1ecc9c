// SPDX-License-Identifier: MIT
#include "automatic/FindCard.h"

#include "automatic/LogoMark.h"
#include "operations/Operations.h"

namespace host {

const HostImage& TextOf(const Conversion& page) {
    return page.letters.Handle() != nullptr ? page.letters : page.bits;
}

std::optional<Box> FindLogoOf(const Conversion& page) {
    return page.choice ? FindLogoMark(page.bits) : FindLogo(page.bits);
}

}  // namespace host
