// SPDX-License-Identifier: MIT
#include "operations/FindCard.h"

#include "operations/Operations.h"

namespace host {

const HostImage& TextOf(const Conversion& page) {
    return page.letters.Handle() != nullptr ? page.letters : page.bits;
}

std::optional<Box> FindLogoOf(const Conversion& page) {
    std::optional<Box> logo;
    if (page.pictures.Handle() != nullptr) logo = FindLogo(page.pictures);
    return logo ? logo : FindLogo(page.bits);
}

}  // namespace host
