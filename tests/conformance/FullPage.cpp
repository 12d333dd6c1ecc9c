// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Pages.h"

namespace tavrix::conformance {
namespace {

constexpr int kWidth = 1400;
constexpr int kHeight = 1500;

// Lines of letters of `size` rows between two columns, from row y up to row end.
void PrintColumn(Page& page, Draws& draw, int left, int right, int y, int end, int size, int tone) {
    const int stroke = std::max(size / 7, 1);
    for (; y + size < end; y += 2 * size) {
        for (int x = left; x + size < right; x += draw.Between(size / 3, size)) {
            const int wide = draw.Between(stroke, size * 3 / 4);
            const int tall = draw.OneIn(2) ? size : size * 2 / 3;
            page.Fill(x, y, stroke, tall, tone);
            page.Fill(x, y + draw.Between(0, tall - stroke), wide, stroke, tone);
            page.Fill(x + wide - stroke, y, stroke, draw.OneIn(2) ? tall : tall / 2, tone);
            x += wide;
        }
    }
}

// A photograph: soft hills of light of two sizes, grain.
void Expose(Page& page, Draws& draw, int left, int bottom, int width, int height) {
    const auto hill = [](int at, int period) {
        const int phase = at % period;
        return 4 * phase * (period - phase) / period * 64 / period;  // 0 to 64
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int light = 40 + hill(x + y / 3, 210) + hill(y + x / 5, 160) + hill(x - y + height, 37) / 2;
            page.Row(bottom + y)[left + x] =
                static_cast<std::uint8_t>(std::clamp(light + draw.Between(-7, 7), 0, 255));
        }
    }
}

void Frame(Page& page, int left, int bottom, int width, int height, int thick, int tone) {
    page.Fill(left, bottom, width, thick, tone);
    page.Fill(left, bottom + height - thick, width, thick, tone);
    page.Fill(left, bottom, thick, height, tone);
    page.Fill(left + width - thick, bottom, thick, height, tone);
}

}  // namespace

Page DrawFullPage() {
    Draws draw(1907);
    Page page(kWidth, kHeight, 226);
    for (int y = 0; y < kHeight; ++y) {  // light that falls off to a corner
        for (int x = 0; x < kWidth; ++x) page.Row(y)[x] = static_cast<std::uint8_t>(238 - (x + y) / 70);
    }
    page.Fill(0, 1330, kWidth, 170, 48);
    PrintColumn(page, draw, 90, 1250, 1360, 1480, 42, 235);
    PrintColumn(page, draw, 90, 660, 820, 1280, 22, 35);
    PrintColumn(page, draw, 740, 1310, 820, 1280, 16, 60);
    page.Fill(700, 820, 3, 460, 70);
    Expose(page, draw, 120, 440, 560, 330);
    PrintColumn(page, draw, 150, 650, 470, 740, 30, 245);
    PrintColumn(page, draw, 150, 650, 500, 740, 60, 10);
    PrintColumn(page, draw, 740, 1310, 440, 770, 14, 190);  // faint
    Frame(page, 80, 120, 600, 270, 4, 40);
    PrintColumn(page, draw, 110, 640, 150, 370, 26, 90);
    Frame(page, 730, 120, 580, 270, 2, 120);
    PrintColumn(page, draw, 750, 1290, 140, 370, 9, 30);
    page.Fill(80, 90, 1240, 2, 50);
    for (int y = 0; y < kHeight; ++y) page.Fill(0, y, 6 + y / 45, 1, 22);  // slanted edge
    constexpr int kShares[] = {3, 12, 40};                                 // of a thousand pixels
    for (int part = 0; part < 3; ++part) {
        for (int i = kShares[part] * kWidth / 3 * kHeight / 1000; i > 0; --i) {
            const int x = draw.Between(part * kWidth / 3, (part + 1) * kWidth / 3 - 1);
            const int y = draw.Between(0, kHeight - 1);
            page.Fill(x, y, 1, 1, draw.Between(0, 255));
        }
    }
    page.AddNoise(draw, 4);
    return page;
}

}  // namespace tavrix::conformance
