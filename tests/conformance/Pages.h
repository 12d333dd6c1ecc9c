// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "Page.h"

namespace tavrix::conformance {

// A card of the size: uneven light, a dark edge of the scanner, a mark, lines of letter-like strokes, noise.
Page DrawCard(int width, int height);
// A small page drawn from a seed: paper and ink of any tone, letter-like marks of any density, blocks of a
// third tone, dark side bands, noise from none to heavy. Odd seeds give tiny pages, down to one pixel.
Page DrawMarks(std::uint32_t seed);
// A card drawn from a seed: paper, shaded areas, dark bands at the sides, rows of strokes, specks, noise.
Page DrawStrokes(std::uint32_t seed);
// Lines of letter-like shapes of several sizes, with dots, broken, touching and slanted letters, rules,
// frames and specks. Black on white.
Page DrawText(std::uint32_t seed);
// About two megapixels: a photograph behind text, a dark head with light text, columns, faint print, frames,
// rules, a slanted dark edge, noise of several densities.
Page DrawFullPage();

// Cards of one pixel and less, of a few, and of an ordinary size.
const std::vector<SheetPointer>& SmallCards();
// Seeds and pages that between them take the ways of the page-analysing methods.
const std::vector<SheetPointer>& VariedPages();
// Pages made for what drawn cards hardly ever are.
const std::vector<SheetPointer>& RarePages();
const SheetPointer& FullPage();

}  // namespace tavrix::conformance
