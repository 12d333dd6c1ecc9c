// SPDX-License-Identifier: MIT
#include "Pages.h"

#include <algorithm>

namespace tavrix::conformance {
namespace {

int LevelAt(int x, int y, int width, int height) {
    const std::uint32_t noise = (static_cast<std::uint32_t>(y * 7919 + x) * 2654435761u) >> 16;
    int level = 185 + 45 * x / width - 35 * y / height + static_cast<int>(noise % 13) - 6;
    const int letter = std::max(height / 16, 4);  // height of letters
    const int line = y / (2 * letter);
    const int row = y % (2 * letter);
    const int column = x % letter;
    const int place = x / letter;
    const bool inText = x > width / 8 && x < width - width / 6 - 9 * line && row < letter && line % 3 != 2;
    const bool hasLetter = (place * 5 + line * 3) % 7 != 0 && column < letter - letter / 4;
    const std::uint32_t shape = static_cast<std::uint32_t>(place * 131 + line * 17) * 2654435761u >> 24;
    const int stroke = letter / 5 + 1;
    const bool inked = (column < stroke && (shape & 1) != 0) || (row < stroke && (shape & 2) != 0) ||
                       (row >= letter - stroke && (shape & 4) != 0) ||
                       (column >= letter / 2 && column < letter / 2 + stroke);
    if (inText && hasLetter && inked) level -= 110;
    const int markX = x - width * 4 / 5;
    const int markY = y - height * 3 / 4;
    const int radius = height / 8;
    if (markX * markX + markY * markY < radius * radius) level = 60 + static_cast<int>(noise % 9);
    if (width > 40 && x < width / 40 + y % 3) level = 25 + static_cast<int>(noise % 5);
    if (noise % 331 == 0) level -= 90;
    return std::max(level, 0);
}

}  // namespace

Page DrawCard(int width, int height) {
    Page page(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            page.Row(y)[x] = static_cast<std::uint8_t>(LevelAt(x, y, width, height));
    }
    return page;
}

Page DrawMarks(std::uint32_t seed) {
    Draws draw(seed);
    const bool tiny = seed % 2 != 0;
    const int side = tiny ? 70 : seed % 64 == 0 ? 820 : 560;
    const int width = draw.Between(tiny ? 1 : side / 2, side);
    const int height = draw.Between(tiny ? 1 : side / 2, tiny ? side : side * 3 / 4);
    const int paper = draw.Percent(20)   ? 255
                      : draw.Percent(60) ? draw.Between(150, 255)
                                         : draw.Between(0, 255);
    Page page(width, height, paper);
    const int ink = draw.Percent(60) ? draw.Between(0, 110) : draw.Between(0, 255);
    const int inkSpread = draw.Percent(30) ? draw.Between(0, 90) : 0;
    for (int blocks = draw.Percent(50) ? draw.Between(1, 4) : 0; blocks > 0; --blocks) {
        const int w = draw.Between(1, width);
        const int h = draw.Between(1, height);
        const int tone = draw.Between(0, 255);
        const int y = draw.Between(-h / 2, height);
        const int x = draw.Between(-w / 2, width);
        page.Fill(x, y, w, h, tone);
    }

    const bool dense = draw.Percent(60);
    const int pitchX = draw.Between(4, dense ? 8 : 14);
    const int pitchY = draw.Between(4, dense ? 8 : 18);
    const int stroke = draw.Between(1, 4);
    const int density = draw.Between(dense ? 50 : 0, 100);
    const int lineGap = draw.Between(0, 40);
    const int textEnd = draw.Percent(25) ? draw.Between(width / 4, width) : width;
    for (int y = 2; y + pitchY < height; y += pitchY) {
        if (draw.Percent(lineGap)) continue;
        for (int x = 2; x + pitchX < textEnd; x += pitchX) {
            if (!draw.Percent(density)) continue;
            const int tall = draw.Between(1, pitchY);
            const int wide = draw.Between(1, pitchX + 1);
            const int tone = std::clamp(ink + draw.Between(-inkSpread, inkSpread), 0, 255);
            page.Fill(x, y, std::min(stroke, wide), tall, tone);
            page.Fill(x, y + draw.Between(0, tall), wide, std::min(stroke, tall), tone);
        }
    }
    if (draw.Percent(30)) {
        const int tone = draw.Between(0, 60);
        page.Fill(0, 0, draw.Between(1, width / 6 + 1), height, tone);
    }
    if (draw.Percent(30)) {
        const int band = draw.Between(1, width / 6 + 1);
        page.Fill(width - band, 0, band, height, draw.Between(0, 60));
    }

    constexpr int kNoises[] = {0, 0, 3, 8, 20, 60, 160};
    const int noise = kNoises[draw.Between(0, 6)];
    const bool cleanPaper = draw.Percent(30);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < static_cast<int>(page.rowBytes); ++x) {
            std::uint8_t& pixel = page.Row(y)[x];
            const int spread = cleanPaper && pixel == paper ? 0 : noise;
            const int tone = x < width ? pixel + draw.Between(-spread, spread) : draw.Between(0, 255);
            pixel = static_cast<std::uint8_t>(std::clamp(tone, 0, 255));
        }
    }
    return page;
}

Page DrawStrokes(std::uint32_t seed) {
    Draws size(seed * 7919u);
    Draws draw(seed);
    const int width = size.Between(380, 760);
    const int height = size.Between(380, 570);
    Page page(width, height);
    for (std::uint8_t& byte : page.bytes) byte = draw.Byte();  // of which the padding stays
    page.Fill(0, 0, width, height, draw.OneIn(3) ? 255 : draw.Between(60, 254));
    for (int i = draw.Between(0, 3); i > 0; --i) {
        const int x = draw.Between(-width / 2, width);
        const int y = draw.Between(-height / 2, height);
        const int w = draw.Between(0, width);
        const int h = draw.Between(0, height);
        page.Fill(x, y, w + 1, h + 1, draw.Between(0, 255));
    }
    const int left = draw.Between(-width / 5, width / 9);
    const int right = draw.Between(-width / 5, width / 9);
    page.Fill(0, 0, left + 1, height, draw.Between(0, 80));
    page.Fill(width - right, 0, right, height, draw.Between(0, 80));
    for (int i = draw.Between(0, 3); i > 0; --i) {
        const int tone = draw.Between(0, 255);
        const int tall = draw.Between(4, 30);
        const int gap = draw.Between(3, 20);
        const int thick = draw.Between(1, 9);
        const int y0 = draw.Between(0, height);
        const int y1 = y0 + draw.Between(0, height);
        const int x0 = draw.Between(0, width / 2);
        for (int y = y0; y < y1; y += tall + gap) {
            for (int x = x0; x < width - x0 / 2; x += thick + draw.Between(1, 8)) {
                page.Fill(x, y, thick, draw.Between(tall / 2, tall), tone);
            }
        }
    }
    if (draw.OneIn(2)) {
        const int tone = draw.Between(0, 255);
        const int wide = draw.Between(0, 2);
        for (int i = draw.Between(0, width * height / 18); i > 0; --i) {
            const int x = draw.Between(0, width - 1);
            const int y = draw.Between(0, height - 1);
            page.Fill(x, y, wide + 1, draw.Between(0, 2) + 1, tone);
        }
    }
    page.AddNoise(draw, draw.OneIn(2) ? draw.Between(1, 40) : 0);
    return page;
}

Page DrawText(std::uint32_t seed) {
    Draws draw(seed);
    const int width = draw.Between(150, 700);
    const int height = draw.Between(60, 420);
    Page page(width, height);
    const int slant = draw.OneIn(3) ? draw.Between(-6, 6) : 0;  // rows in a hundred columns
    int size = draw.Between(8, 40);                             // of the letters, in rows
    for (int y = draw.Between(0, 12); y < height; y += size + draw.Between(1, size)) {
        if (draw.OneIn(3)) size = draw.Between(6, draw.OneIn(4) ? 110 : 40);
        const int stroke = std::max(size / 7, 1);
        const int touching = draw.Between(0, 60);  // percent
        const int end = draw.Between(width / 4, width + 20);
        for (int x = draw.Between(-8, width / (draw.OneIn(3) ? 2 : 8)); x < end;) {
            const int wide = draw.Between(stroke, size);
            const int tall = draw.Percent(60) ? size : draw.Between(size / 3, size);
            const int base = y + (x * slant) / 100 + (draw.OneIn(8) ? draw.Between(-4, 4) : 0);
            page.Fill(x, base, stroke, tall, 0);
            if (draw.OneIn(2)) page.Fill(x + wide - stroke, base, stroke, tall, 0);
            if (draw.OneIn(2)) page.Fill(x, base, wide, stroke, 0);
            if (draw.OneIn(2)) page.Fill(x, base + tall - stroke, wide, stroke, 0);
            if (draw.OneIn(6)) page.Fill(x, base + tall + draw.Between(1, 5), wide / 2 + 1, size / 6 + 1, 0);
            if (draw.OneIn(9)) page.Fill(x, base + tall / 2, wide, draw.Between(1, 3), 255);
            x += wide;
            if (draw.Percent(touching)) {
                const int bridge = draw.Between(1, 3);
                page.Fill(x - stroke, base + draw.Between(0, tall - 1), stroke + 2, bridge, 0);
                x += 1;
            } else {
                x += draw.Between(1, draw.OneIn(7) ? 3 * size : size / 2);
            }
        }
        if (draw.OneIn(5)) {
            const int thick = draw.Between(1, 4);
            page.Fill(draw.Between(0, width / 2), y - 2, width, thick, 0);
        }
    }
    for (int i = draw.OneIn(3) ? draw.Between(0, 60) : 0; i > 0; --i) {
        const int x = draw.Between(0, width - 1);
        const int y = draw.Between(0, height - 1);
        const int w = draw.Between(1, 5);
        page.Fill(x, y, w, draw.Between(1, 5), 0);
    }
    if (draw.OneIn(4)) {
        const int thick = draw.Between(1, 4);
        page.Fill(0, 0, width, thick, 0);
        page.Fill(0, height - thick, width, thick, 0);
        page.Fill(0, 0, thick, height, 0);
        page.Fill(width - thick, 0, thick, height, 0);
    }
    return page;
}

}  // namespace tavrix::conformance
