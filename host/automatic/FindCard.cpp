// SPDX-License-Identifier: MIT
#include "automatic/FindCard.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "automatic/AreaTree.h"
#include "operations/Operations.h"

namespace host {
namespace {

// The picture with a white margin at the right where it is higher than wide: the library measures a logo by
// the width, which it takes for that of a card.
HostImage Widened(const HostImage& bits) {
    HostImage page(std::max(bits.Width(), bits.Height()), bits.Height(), 1);
    for (int y = 0; y < bits.Height(); ++y) {
        const std::size_t whole = static_cast<std::size_t>(bits.Width()) / 8;
        std::uint8_t* row = page.TopRow(y);
        std::memset(row, 0xFF, page.RowBytes());
        std::memcpy(row, bits.TopRow(y), whole);
        if (bits.Width() % 8 != 0)
            row[whole] = static_cast<std::uint8_t>(bits.TopRow(y)[whole] | 0xFF >> bits.Width() % 8);
    }
    return page;
}

constexpr double kMaxLogoWidth = 0.6, kMaxLogoHeight = 0.5;  // of the picture's

// Of what is no text those areas that may be a logo or a large part of one: no smaller than letters either
// way, smaller than the card, whole, and of at least a share of the largest one's box.
HostImage MarksOf(const HostImage& pictures, int letterHeight, double share) {
    const HostImage page = Widened(pictures);
    const AreaTree tree(page, nullptr);
    const auto mayBe = [&](const Area& area) {
        const bool isWhole = area.left > 0 && area.top > 0 && area.right < pictures.Width() - 1 &&
                             area.bottom < pictures.Height() - 1;
        return area.isDark && isWhole && std::min(area.Width(), area.Height()) >= letterHeight &&
               area.Width() < kMaxLogoWidth * page.Width() && area.Height() <= kMaxLogoHeight * page.Height();
    };
    const auto boxOf = [](const Area& area) { return static_cast<double>(area.Width()) * area.Height(); };
    double largest = 0;
    for (const Area& area : tree.Areas()) {
        if (mayBe(area)) largest = std::max(largest, boxOf(area));
    }
    std::vector<bool> isMark;
    for (const Area& area : tree.Areas()) isMark.push_back(mayBe(area) && boxOf(area) >= share * largest);
    return tree.Paint(isMark);
}

}  // namespace

const HostImage& TextOf(const Conversion& page) {
    return page.letters.Handle() != nullptr ? page.letters : page.bits;
}

std::optional<Box> FindLogoOf(const Conversion& page) {
    if (page.pictures.Handle() == nullptr) return FindLogo(page.bits);
    const int side = std::max(page.bits.Width(), page.bits.Height());
    const auto smaller = [&](std::optional<Box> logo) {
        const bool isSmall = logo && logo->right - logo->left < kMaxLogoWidth * side &&
                             logo->bottom - logo->top < kMaxLogoHeight * page.bits.Height();
        return isSmall ? logo : std::nullopt;
    };
    const int letterHeight = page.scale * page.choice->letterHeight;
    // Parts of a logo lie together; where they are all over the card only the largest one may be one.
    for (const double share : {0.2, 1.0}) {
        if (const auto logo = smaller(FindLogo(MarksOf(page.pictures, letterHeight, share)))) return logo;
    }
    return smaller(FindLogo(page.bits));
}

}  // namespace host
