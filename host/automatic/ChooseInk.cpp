// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>

#include "automatic/Ink.h"
#include "automatic/Letters.h"

namespace host {
namespace {

constexpr int kMinLetters = 3;          // that make an area ground
constexpr double kLetterHeight = 0.75;  // of the ground's height, at most
constexpr double kThinness = 1.6;       // the ground is so much thicker than the strokes on it
constexpr double kMinSolidity = 0.5;    // of its box that the ground covers, holes included
constexpr double kPanelSolidity = 0.7;  // the same of a light panel...
constexpr double kHaloText = 0.2;       // ...unless letters cover so much of it
constexpr double kMaxInkWidth = 0.6;    // of the ground's, for light ink that is no letter
constexpr double kMaxInkShare = 0.2;    // of the ground's pixels

// What an area is taken for.
enum class Role : std::uint8_t {
    kPaper,       // light
    kInk,         // dark on paper
    kDarkGround,  // dark, with light letters
    kLightInk,    // light on a dark ground
    kCounter,     // dark in light ink
};

// Letters directly on an area of the other colour.
struct Inscription {
    int letters = 0;
    int complex = 0;
    std::int64_t pixels = 0;
    std::int64_t contour = 0;
};

bool HasText(const Inscription& text) {
    return text.letters >= kMinLetters && 2 * text.complex >= text.letters;
}

// A light area with dark letters: a panel, or a halo around them. Others, like a car with dark windows, are
// ink.
bool IsPanel(const Area& area, const Inscription& text, std::int64_t filled) {
    return HasText(text) && (static_cast<double>(filled) >= kPanelSolidity * area.Width() * area.Height() ||
                             static_cast<double>(text.pixels) >= kHaloText * static_cast<double>(filled));
}

bool IsGround(const Area& area, const Inscription& text, std::int64_t filled) {
    if (!HasText(text)) return false;
    const double strokes = static_cast<double>(text.pixels) / static_cast<double>(text.contour);
    return area.Thickness() >= kThinness * strokes &&
           static_cast<double>(filled) >= kMinSolidity * area.Width() * area.Height();
}

bool FitsOn(const Area& area, const Area& ground) {
    return area.Width() < kMaxInkWidth * ground.Width() && area.Height() < kLetterHeight * ground.Height() &&
           static_cast<double>(area.pixels) < kMaxInkShare * static_cast<double>(ground.pixels);
}

}  // namespace

Ink ChooseInk(const AreaTree& tree, const std::vector<bool>& isLetter) {
    const std::vector<Area>& areas = tree.Areas();
    const std::size_t count = areas.size();
    std::vector<Inscription> texts(count);
    std::vector<std::int64_t> filled(count);
    for (std::size_t i = count; i-- > 0;) {
        const Area& area = areas[i];
        filled[i] += area.pixels;
        if (area.parent < 0) continue;
        const auto parent = static_cast<std::size_t>(area.parent);
        filled[parent] += filled[i];
        if (!isLetter[i] || area.Height() >= kLetterHeight * areas[parent].Height()) continue;
        Inscription& text = texts[parent];
        ++text.letters;
        if (HasStrokes(area)) ++text.complex;
        text.pixels += area.pixels;
        text.contour += area.contour;
    }
    Ink ink = {std::vector<bool>(count), 0};
    std::vector<Role> roles(count);
    for (std::size_t i = 0; i < count; ++i) {  // parents come first
        const Area& area = areas[i];
        const Role around = area.parent < 0 ? Role::kPaper : roles[static_cast<std::size_t>(area.parent)];
        Role& role = roles[i];
        if (around == Role::kLightInk) {
            role = Role::kCounter;
        } else if (area.isDark) {
            role = IsGround(area, texts[i], filled[i]) ? Role::kDarkGround : Role::kInk;
            ink.grounds += role == Role::kDarkGround;
        } else {
            const bool isOnDark =
                around == Role::kCounter ||
                (around == Role::kDarkGround && FitsOn(area, areas[static_cast<std::size_t>(area.parent)]));
            role = isOnDark && !IsPanel(area, texts[i], filled[i]) ? Role::kLightInk : Role::kPaper;
        }
        ink.areas[i] = role == Role::kInk || role == Role::kLightInk;
    }
    return ink;
}

}  // namespace host
