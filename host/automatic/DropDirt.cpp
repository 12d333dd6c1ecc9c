// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>

#include "automatic/Ink.h"
#include "automatic/Letters.h"

namespace host {
namespace {

constexpr double kFaintRim = 0.35;        // of the letters' edge strength
constexpr double kFaintLetterRim = 0.24;  // the same for what looks like a letter
constexpr int kLidHeight = 4;  // in letter heights: higher things at the picture's edge are no letters
constexpr int kLidWidth = 8;
constexpr double kLidThickness = 2;  // beside that of the letters
constexpr double kSpeck = 0.5;       // in letter heights: larger bits may be of a letter in faint print
constexpr double kReach = 0.7;       // of a letter, up and down, in its own height; twice that sidewards

template <class T>
T MiddleOf(std::vector<T> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Where letters are near, on a grid of cells a quarter of a letter high.
class Neighbourhood {
  public:
    Neighbourhood(int width, int height, int letterHeight)
        : cell(std::max(1, letterHeight / 4)),
          columns(width / cell + 1),
          rows(height / cell + 1),
          isNear(static_cast<std::size_t>(columns) * rows) {}

    void Add(const Area& letter) {
        const int reach = static_cast<int>(kReach * letter.Height()) + 1;
        const int last = std::min(columns - 1, (letter.right + 2 * reach) / cell);
        for (int y = std::max(0, letter.top - reach) / cell;
             y <= std::min(rows - 1, (letter.bottom + reach) / cell); ++y) {
            for (int x = std::max(0, letter.left - 2 * reach) / cell; x <= last; ++x) isNear[At(x, y)] = true;
        }
    }

    bool Touches(const Area& area) const {
        for (int y = area.top / cell; y <= area.bottom / cell; ++y) {
            for (int x = area.left / cell; x <= area.right / cell; ++x) {
                if (isNear[At(x, y)]) return true;
            }
        }
        return false;
    }

  private:
    std::size_t At(int x, int y) const { return static_cast<std::size_t>(y) * columns + x; }
    int cell, columns, rows;
    std::vector<bool> isNear;
};

}  // namespace

int DropDirt(const AreaTree& tree, const std::vector<bool>& isLetter, Ink& ink) {
    const std::vector<Area>& areas = tree.Areas();
    const int letterHeight = TypicalHeight(tree, isLetter, ink.areas);
    if (letterHeight == 0) return 0;
    std::vector<double> rims, thicknesses;
    Neighbourhood letters(tree.Width(), tree.Height(), letterHeight);
    for (std::size_t i = 0; i < areas.size(); ++i) {
        if (!ink.areas[i] || !isLetter[i]) continue;
        rims.push_back(areas[i].EdgeStrength());
        thicknesses.push_back(areas[i].Thickness());
        letters.Add(areas[i]);
    }
    const double rim = MiddleOf(rims);
    const double thickness = MiddleOf(thicknesses);
    int dropped = 0;
    for (std::size_t i = 0; i < areas.size(); ++i) {
        if (!ink.areas[i]) continue;
        const Area& area = areas[i];
        const bool isFaint = area.EdgeStrength() < (isLetter[i] ? kFaintLetterRim : kFaintRim) * rim;
        const bool isAtEdge = area.left == 0 || area.top == 0 || area.right == tree.Width() - 1 ||
                              area.bottom == tree.Height() - 1;
        const bool isLid =
            isAtEdge &&
            (area.Height() > kLidHeight * letterHeight || area.Width() > kLidWidth * letterHeight) &&
            area.Thickness() > kLidThickness * thickness;
        const bool isSpeck = !isLetter[i] && std::max(area.Width(), area.Height()) < kSpeck * letterHeight &&
                             !letters.Touches(area);
        if (!isFaint && !isLid && !isSpeck) continue;
        ink.areas[i] = false;
        ++dropped;
    }
    return dropped;
}

}  // namespace host
