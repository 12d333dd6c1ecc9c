// SPDX-License-Identifier: MIT
#include "automatic/LostText.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "automatic/Automatic.h"
#include "automatic/Filters.h"
#include "picture/EveryProcessor.h"

namespace host {
namespace {

constexpr int kShortSide = 96;           // pixels: a picture with a shorter one holds no text to lose
constexpr double kNearlyBlank = 0.0005;  // of the pixels are black
constexpr double kMostlyBlack = 0.5;
constexpr int kCell = 8;             // pixels: edges and ink are compared by cells of that size
constexpr int kStrongEdge = 60;      // levels between the lightest and the darkest of 3 x 3 neighbours
constexpr int kEdgePixels = 6;       // in a cell, from which on it should hold ink
constexpr int kEnoughCells = 40;     // fewer tell nothing
constexpr double kSuspicious = 0.1;  // of the cells with edges hold no ink
constexpr double kLetterInk = 0.2;   // of a letter's pixels that it has at least in a result that shows it
constexpr double kMuchLess = 0.2;    // of the letters have less

int CellsOf(int side) {
    return (side + kCell - 1) / kCell;
}

// Adds one where neighbours of a pixel differ much.
HOST_FOR_EVERY_PROCESSOR void AddEdges(const std::uint8_t* dark, const std::uint8_t* light, int width,
                                       std::uint8_t* sums) {
    for (int x = 0; x < width; ++x) {
        const bool isEdge = static_cast<std::uint8_t>(light[x] - dark[x]) >= kStrongEdge;
        sums[x] = static_cast<std::uint8_t>(sums[x] + isEdge);
    }
}

// How many pixels of strong edges every cell has.
Levels EdgesInCells(const HostImage& gray) {
    const int width = gray.Width(), last = gray.Height() - 1;
    Levels counts(CellsOf(width), CellsOf(gray.Height()));
    RowExtremes rows(width);
    std::vector<std::uint8_t> dark(width), light(width),
        sums(static_cast<std::size_t>(kCell) * counts.Width());  // of a row of cells
    for (int y = 0; y <= last; ++y) {
        rows.Find(gray.TopRow(std::max(0, y - 1)), gray.TopRow(y), gray.TopRow(std::min(last, y + 1)),
                  dark.data(), light.data());
        AddEdges(dark.data(), light.data(), width, sums.data());
        if (y % kCell != kCell - 1 && y != last) continue;
        std::uint8_t* count = counts.Row(y / kCell);
        for (int cell = 0; cell < counts.Width(); ++cell) {
            std::uint64_t eight;
            std::memcpy(&eight, sums.data() + kCell * cell, sizeof eight);
            count[cell] =
                static_cast<std::uint8_t>(eight * 0x0101010101010101u >> 56);  // the sum of its bytes
        }
        std::fill(sums.begin(), sums.end(), std::uint8_t{0});
    }
    return counts;
}

// Cells of the gray picture's grid that have ink in the result, or beside them.
Levels CellsNearInk(const HostImage& bits, int columns, int rows, int scale) {
    Levels ink(columns, rows);
    std::vector<std::uint8_t> white((static_cast<std::size_t>(bits.Width()) + 7) / 8);  // in a row of cells
    const int side = kCell * scale, rest = bits.Width() % 8;
    for (int top = 0; top < bits.Height(); top += side) {
        std::fill(white.begin(), white.end(), std::uint8_t{0xFF});
        for (int y = top; y < std::min(top + side, bits.Height()); ++y) {
            const std::uint8_t* row = bits.TopRow(y);
            for (std::size_t i = 0; i < white.size(); ++i) white[i] &= row[i];
        }
        if (rest != 0) white.back() |= static_cast<std::uint8_t>(0xFF >> rest);
        std::uint8_t* cell = ink.Row(std::min(rows - 1, top / side));
        for (std::size_t i = 0; i < white.size(); ++i) {
            if (white[i] != 0xFF) cell[std::min(columns - 1, static_cast<int>(i) / scale)] = 1;
        }
    }
    return ExtremesOf(ink).lightest;
}

// Whether many strong edges of the gray picture have no ink near them.
bool IsSuspicious(const HostImage& gray, const HostImage& bits, int scale) {
    const Levels edges = EdgesInCells(gray);
    const Levels ink = CellsNearInk(bits, edges.Width(), edges.Height(), scale);
    int all = 0, bare = 0;
    for (int y = 0; y < edges.Height(); ++y) {
        for (int x = 0; x < edges.Width(); ++x) {
            if (edges.Row(y)[x] < kEdgePixels) continue;
            ++all;
            bare += ink.Row(y)[x] == 0;
        }
    }
    return all >= kEnoughCells && bare > kSuspicious * all;
}

// Whether a letter, as a place of the picture that the bits enlarge, has hardly any ink in them.
bool IsMissing(const Area& letter, const HostImage& bits, int scale) {
    std::int64_t black = 0;
    for (int y = letter.top * scale; y < (letter.bottom + 1) * scale; ++y) {
        const std::uint8_t* row = bits.TopRow(y);
        for (int x = letter.left * scale; x < (letter.right + 1) * scale; ++x)
            black += (row[x / 8] >> (7 - x % 8) & 1) == 0;
    }
    return static_cast<double>(black) < kLetterInk * scale * scale * static_cast<double>(letter.pixels);
}

void WarnOfMissing(const std::vector<Area>& letters, const HostImage& bits, int scale,
                   std::vector<std::string>& warnings) {
    const auto missing = static_cast<double>(std::count_if(
        letters.begin(), letters.end(), [&](const Area& letter) { return IsMissing(letter, bits, scale); }));
    const auto all = static_cast<double>(letters.size());
    if (missing <= kMuchLess * all) return;
    warnings.push_back("much less ink than other modes find: " +
                       std::to_string(std::lround(100 * missing / all)) + " % of the letters have none");
}

}  // namespace

std::vector<std::string> WarningsFor(const HostImage& gray, const HostImage& bits,
                                     const std::optional<std::vector<Area>>& textLetters) {
    std::vector<std::string> warnings;
    if (std::min(gray.Width(), gray.Height()) < kShortSide) return warnings;
    const double black = BlackShare(bits);
    if (black < kNearlyBlank) warnings.emplace_back("the result is nearly blank");
    if (black > kMostlyBlack) warnings.emplace_back("the result is mostly black");
    const int scale = std::max(1, bits.Width() / gray.Width());
    if (textLetters) {
        WarnOfMissing(*textLetters, bits, 1, warnings);
    } else if (IsSuspicious(gray, bits, scale)) {
        WarnOfMissing(FindTextLetters(gray), bits, scale, warnings);
    }
    if (textLetters && textLetters->empty() && black >= kNearlyBlank)
        warnings.emplace_back("hardly any text was found");
    return warnings;
}

}  // namespace host
