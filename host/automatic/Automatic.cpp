// SPDX-License-Identifier: MIT
#include "automatic/Automatic.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "automatic/AreaTree.h"
#include "automatic/Ink.h"
#include "automatic/Letters.h"
#include "automatic/Levelling.h"
#include "operations/Operations.h"
#include "picture/Scaling.h"

namespace host {
namespace {

constexpr int kUsualLetters = 16;  // pixels, where one reading has to do
constexpr int kSmallLetters = 20;  // pixels: below that twice the size reads better

// Rows from the top, as the edges and the tree count them.
Levels TopDown(const HostImage& gray) {
    Levels levels(gray.Width(), gray.Height());
    for (int y = 0; y < gray.Height(); ++y) std::copy_n(gray.TopRow(y), gray.Width(), levels.Row(y));
    return levels;
}

// One pass over a gray picture.
struct Pass {
    AreaTree tree;
    std::vector<bool> isLetter;
    Ink ink;
    int letterHeight;
};

Pass Read(const Levels& gray, int letterHeight) {
    const Levelled levelled = Level(gray, letterHeight);
    HostImage even(gray.Width(), gray.Height(), 8);
    for (int y = 0; y < gray.Height(); ++y)
        std::copy_n(levelled.picture.Row(y), gray.Width(), even.TopRow(y));
    const HostImage bits = Binarize(std::move(even), *FindMode("isodata"));
    AreaTree tree(bits, &levelled.edges);
    std::vector<bool> isLetter = FindLetters(tree);
    Ink ink = ChooseInk(tree, isLetter);
    const int height = TypicalHeight(tree, isLetter, ink.areas);
    return {std::move(tree), std::move(isLetter), std::move(ink), height};
}

bool AreSmall(int letterHeight) {
    return letterHeight != 0 && letterHeight <= kSmallLetters;
}

// The share of the ink that stands in rows of letters.
double ShareInRows(const Pass& pass) {
    std::int64_t all = 0;
    std::int64_t inRows = 0;
    for (std::size_t i = 0; i < pass.ink.areas.size(); ++i) {
        if (!pass.ink.areas[i]) continue;
        all += pass.tree.Areas()[i].pixels;
        if (pass.isLetter[i]) inRows += pass.tree.Areas()[i].pixels;
    }
    return all == 0 ? 0 : static_cast<double>(inRows) / static_cast<double>(all);
}

// Letters in rows without the frames around some, and marks no larger than letters: dots, accents, signs.
std::vector<bool> MarkText(const Pass& pass) {
    std::vector<bool> isText(pass.isLetter.size());
    for (std::size_t i = 0; i < isText.size(); ++i) {
        const Area& area = pass.tree.Areas()[i];
        const bool isMark = std::max(area.Width(), area.Height()) < pass.letterHeight;
        isText[i] =
            pass.ink.areas[i] &&
            (isMark || (pass.isLetter[i] && !IsFrame(pass.tree, pass.ink.areas, pass.letterHeight, i)));
    }
    return isText;
}

}  // namespace

std::string Described(const AutomaticChoice& choice) {
    if (choice.wasBilevel) return "has two levels already, kept";
    char share[32];
    std::snprintf(share, sizeof share, "%.2f", choice.confidence);
    return "evened out, then mode isodata; " +
           (choice.letterHeight == 0
                ? std::string("hardly any letters")
                : "letters of about " + std::to_string(choice.letterHeight) + " pixels") +
           ", " + std::to_string(choice.grounds) + " dark areas with light text turned, " +
           std::to_string(choice.dropped) + " shadows, borders and specks dropped; confidence " + share;
}

AutomaticResult BinarizeAutomatically(HostImage image, int scale) {
    AutomaticChoice choice;
    choice.scale = std::max(1, scale);
    if (image.BitCount() == 1 && choice.scale == 1) {
        choice.wasBilevel = true;
        return {std::move(image), {}, choice, {}};
    }
    image = ToGray(std::move(image));
    Levels gray = TopDown(image);
    Pass pass = Read(gray, 0);
    choice.letterHeight = pass.letterHeight;
    if (scale == 0 && AreSmall(pass.letterHeight)) choice.scale = 2;
    if (choice.scale != 1) gray = TopDown(Scaled(std::move(image), choice.scale));
    if (pass.letterHeight != 0 || choice.scale != 1) pass = Read(gray, choice.scale * pass.letterHeight);
    choice.grounds = pass.ink.grounds;
    std::vector<Area> textLetters = FindTextLetters(pass.tree, pass.ink.areas);
    choice.dropped = DropDirt(pass.tree, pass.isLetter, pass.ink);
    choice.confidence = ShareInRows(pass);
    AutomaticResult result = {pass.tree.Paint(pass.ink.areas), {}, choice, std::move(textLetters)};
    if (pass.letterHeight != 0) result.letters = pass.tree.Paint(MarkText(pass));
    return result;
}

std::vector<Area> FindTextLetters(const HostImage& gray) {
    const Pass pass = Read(TopDown(gray), 0);
    return FindTextLetters(pass.tree, pass.ink.areas);
}

TextReading ReadText(const HostImage& gray) {
    const Pass pass = Read(TopDown(gray), kUsualLetters);
    return {pass.tree.Paint(pass.ink.areas), FindTextRows(pass.tree, pass.ink.areas)};
}

int ScaleFor(const HostImage& gray) {
    return AreSmall(Read(TopDown(gray), 0).letterHeight) ? 2 : 1;
}

}  // namespace host
