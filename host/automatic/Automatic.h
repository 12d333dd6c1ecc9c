// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automatic/TextRows.h"
#include "picture/HostImage.h"

namespace host {

// What the automatic mode found out and did.
struct AutomaticChoice {
    int scale = 1;            // the result's sides in those of the picture
    int letterHeight = 0;     // the typical one, in pixels of the picture; 0 where there are hardly any
    int grounds = 0;          // dark areas with light text, which came out dark on light
    int dropped = 0;          // areas taken away: shadows, lid, specks
    double confidence = 0;    // share of the black pixels that belong to letters in rows, 0 to 1
    bool wasBilevel = false;  // the picture had two levels and kept them
};

// The same in plain words.
std::string Described(const AutomaticChoice& choice);

struct AutomaticResult {
    HostImage bits;
    HostImage
        letters;  // those areas that are letters in rows, or lie among them; empty where there are hardly any
    AutomaticChoice choice;
    // Letters that stood in rows before dirt was dropped, as places of the bits; none looked for in two
    // levels.
    std::optional<std::vector<Area>> textLetters;
};

// Black and white with as much of the text as can be had (docs/modes.md has the steps). scale: the
// result's sides in those of the picture; 0: twice where the letters are small.
AutomaticResult BinarizeAutomatically(HostImage image, int scale = 1);

// The letters of a gray picture that stand in rows, level ones or else those on their side.
std::vector<Area> FindTextLetters(const HostImage& gray);

struct TextReading {
    HostImage ink;
    std::vector<TextRow> rows;  // level or aslant
};
TextReading ReadText(const HostImage& gray);

// 2 for a gray picture whose letters are small, else 1.
int ScaleFor(const HostImage& gray);

}  // namespace host
