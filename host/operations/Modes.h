// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace host {

struct Mode {
    int number;  // as Binarized takes it
    std::string_view name;
    std::string_view suits;
    int words;       // that Tesseract 5.3 reads of the results, of kPrintedWords (bench/ocr)
    double mean;     // share of the printed words, in the mean of the pictures, in per cent
    bool hasBlocks;  // Binarized_Separate_Block takes it, too
};

// On 22 photographs and scans of cards, receipts and pages.
inline constexpr int kPrintedWords = 1426;

inline constexpr std::array<Mode, 9> kModes = {{
    {0, "local", "uneven light on one sheet: local mean and deviation around an Otsu threshold", 805, 49.7,
     true},
    {1, "otsu", "even light, plenty of ink: one threshold that separates two classes best", 865, 52.3, true},
    {2, "midrange", "strong shadows, low noise: mid-range of the neighbourhood (Bernsen)", 817, 45.6, true},
    {3, "peaks", "even light, little ink: between the paper's and the ink's histogram peaks", 667, 44.0,
     true},
    {4, "gradient", "outlines rather than filled strokes: strength of edges", 12, 0.8, true},
    {5, "regions", "cards with pictures and coloured areas: a rule for every region around its edges", 791,
     51.0, true},
    {6, "isodata", "even light: one threshold midway between the mean of ink and of paper", 880, 52.9, true},
    {8, "lines", "cards and pages of text: a rule for every text line, nothing else kept", 862, 52.0, true},
    {9, "sharp", "faint or blurred print: sharpened, then the region rule over the whole picture", 677, 44.2,
     false},
}};

// Not one of the library's: the command's own way through them (automatic/Automatic.h).
inline constexpr Mode kAutomaticMode = {
    -1,   "auto", "everything: evens out the light, turns light text dark, drops dirt; the default",
    1164, 74.3,   false};

// By number or name, the automatic one by name.
std::optional<Mode> FindMode(std::string_view text);

}  // namespace host
