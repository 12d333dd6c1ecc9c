// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Pages.h"

namespace tavrix::conformance {
namespace {

SheetPointer SheetOf(const std::string& name, std::function<Page()> draw) {
    return std::make_shared<Sheet>(name, std::move(draw));
}

SheetPointer CardOf(int width, int height) {
    return SheetOf("card " + std::to_string(width) + "x" + std::to_string(height),
                   [=] { return DrawCard(width, height); });
}

// Dots four pixels apart, a fifth of the page black: very busy and bright.
Page DotsBesideBlack() {
    Page page(480, 490);
    page.Fill(0, 0, 480, 100, 0);
    page.Fill(0, 100, 480, 390, 0, 4);
    return page;
}

// Very busy and bright, with much black and some gray.
Page DotsBesideBlackAndGray() {
    Page page(480, 490);
    page.Fill(0, 0, 480, 140, 0);
    page.Fill(0, 140, 480, 60, 100);
    page.Fill(0, 140, 480, 350, 0, 4);
    return page;
}

// Very busy and dark.
Page LightDotsOnBlack() {
    Page page(441, 400, 20);
    page.Fill(0, 0, 441, 400, 255, 4);
    return page;
}

// Very busy, half gray; in a clearing a striped block, three quarters dark with its margin.
Page StripesAmongDots() {
    Page page(640, 620, 191);
    page.Fill(0, 0, 640, 270, 100);
    page.Fill(0, 0, 640, 620, 0, 4);
    page.Fill(200, 350, 191, 191, 191);
    for (int x = 215; x < 375; ++x) page.Fill(x, 365, 1, 160, x % 25 < 12 ? 20 : 90);
    return page;
}

// Rows of bars, gray at the core, that interlock to one line over the page, columns of dots between them.
Page InterlockedBars() {
    Page page(800, 620);
    for (int i = 0; i < 37; ++i) {
        const int x = 30 + 20 * i;
        for (int y = 30 + i % 2 * 23; y < 550; y += 46) {
            page.Fill(x, y, 10, 40, 0);
            page.Fill(x + 4, y + 9, 2, 22, 97);
        }
        for (int y = 30; y < 580; y += 5) {
            page.Fill(x + 12, y, 1, 1, 0);
            page.Fill(x + 16, y, 1, 1, 0);
        }
    }
    return page;
}

// Busy, bright and shaded; in a clearing a block whose 3 x 3 means are all dark.
Page WeaveAmongDots() {
    Page page(560, 480);
    page.Fill(0, 0, 560, 50, 150);
    page.Fill(0, 0, 560, 480, 0, 4);
    page.Fill(200, 200, 191, 191, 255);
    for (int y = 215; y < 375; ++y) {
        for (int x = 215; x < 375; ++x) page.Fill(x, y, 1, 1, (x % 3 + y % 3 * 3) % 2 != 0 ? 139 : 0);
    }
    return page;
}

// One striped block that covers the page, three quarters of two dark tones.
Page CoveringStripes(int dark, int middle) {
    Page page(400, 300, 132);
    for (int x = 51; x < 350; ++x) {
        const int phase = (x - 51) % 25;
        if (phase < 11 || phase >= 14) page.Fill(x, 40, 1, 220, phase < 11 ? dark : middle);
    }
    return page;
}

// A card with a line of dark text and a dark band with light text.
Page DarkBand() {
    Page page(600, 400, 235);
    page.Fill(100, 220, 280, 100, 40);
    for (int x = 130; x < 350; x += 14) {
        page.Fill(x, 100, 6, 30, 30);
        page.Fill(x, 255, 6, 30, 240);
    }
    return page;
}

}  // namespace

const std::vector<SheetPointer>& SmallCards() {
    static const std::vector<SheetPointer> sheets{CardOf(1, 1),    CardOf(0, 3),    CardOf(5, 0),
                                                  CardOf(7, 5),    CardOf(33, 31),  CardOf(64, 8),
                                                  CardOf(130, 70), CardOf(403, 241)};
    return sheets;
}

const std::vector<SheetPointer>& VariedPages() {
    static const std::vector<SheetPointer> sheets = [] {
        std::vector<SheetPointer> all;
        for (const std::uint32_t seed :
             {22,  38,  48,  56,  92,  100,  132,  172,  182,  244,  264,  278,   316,   344,
              436, 594, 626, 640, 644, 2000, 2312, 2784, 2936, 5656, 7808, 12524, 28352, 54976}) {
            all.push_back(SheetOf("marks " + std::to_string(seed), [=] { return DrawMarks(seed); }));
        }
        for (const std::uint32_t seed :
             {3282, 385, 2030, 280, 4085, 91,  3998, 4180, 1215, 2012, 3,    27,   37,   54,  60,
              70,   86,  96,   256, 276,  291, 308,  321,  619,  630,  1247, 1731, 1910, 4786}) {
            all.push_back(SheetOf("strokes " + std::to_string(seed), [=] { return DrawStrokes(seed); }));
        }
        for (std::uint32_t seed = 1; seed < 24; seed += 2) {
            all.push_back(SheetOf("marks " + std::to_string(seed), [=] { return DrawMarks(seed); }));
        }
        return all;
    }();
    return sheets;
}

const std::vector<SheetPointer>& RarePages() {
    static const std::vector<SheetPointer> sheets{
        SheetOf("dots beside black", DotsBesideBlack),
        SheetOf("dots beside black and gray", DotsBesideBlackAndGray),
        SheetOf("light dots on black", LightDotsOnBlack),
        SheetOf("stripes among dots", StripesAmongDots),
        SheetOf("interlocked bars", InterlockedBars),
        SheetOf("weave among dots", WeaveAmongDots),
        SheetOf("covering stripes", [] { return CoveringStripes(20, 90); }),
        SheetOf("covering darker stripes", [] { return CoveringStripes(10, 62); }),
        SheetOf("dark band", DarkBand)};
    return sheets;
}

const SheetPointer& FullPage() {
    static const SheetPointer sheet = SheetOf("full page", DrawFullPage);
    return sheet;
}

}  // namespace tavrix::conformance
