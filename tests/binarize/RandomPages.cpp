// SPDX-License-Identifier: MIT
#include "binarize/RandomPages.h"

#include <algorithm>

namespace tavrix::test {
namespace {

// The distributions of the standard library differ from one implementation to the next.
class Draws {
  public:
    explicit Draws(std::uint32_t seed) : random(seed) {}

    int Between(int low, int high) {
        return low + static_cast<int>(random() % static_cast<std::uint32_t>(high - low + 1));
    }
    bool Percent(int share) { return Between(0, 99) < share; }

  private:
    std::mt19937 random;
};

}  // namespace

HostImage RandomPage(std::uint32_t seed) {
    Draws draw(seed);
    const bool small = seed % 2 != 0;
    const int side = small ? 70 : seed % 64 == 0 ? 820 : 560;
    const int width = draw.Between(small ? 1 : side / 2, side);
    const int height = draw.Between(small ? 1 : side / 2, small ? side : side * 3 / 4);
    HostImage page(width, height, 8);
    const auto fill = [&](int x0, int y0, int w, int h, int tone) {
        for (int y = std::max(y0, 0); y < std::min(y0 + h, height); ++y) {
            for (int x = std::max(x0, 0); x < std::min(x0 + w, width); ++x) {
                page.Row(y)[x] = static_cast<std::uint8_t>(tone);
            }
        }
    };
    const int paper = draw.Percent(20)   ? 255
                      : draw.Percent(60) ? draw.Between(150, 255)
                                         : draw.Between(0, 255);
    const int ink = draw.Percent(60) ? draw.Between(0, 110) : draw.Between(0, 255);
    const int inkSpread = draw.Percent(30) ? draw.Between(0, 90) : 0;
    fill(0, 0, width, height, paper);
    for (int blocks = draw.Percent(50) ? draw.Between(1, 4) : 0; blocks > 0; --blocks) {
        const int w = draw.Between(1, width), h = draw.Between(1, height);
        fill(draw.Between(-w / 2, width), draw.Between(-h / 2, height), w, h, draw.Between(0, 255));
    }

    const bool dense = draw.Percent(60);
    const int pitchX = draw.Between(4, dense ? 8 : 14), pitchY = draw.Between(4, dense ? 8 : 18);
    const int stroke = draw.Between(1, 4), density = draw.Between(dense ? 50 : 0, 100);
    const int lineGap = draw.Between(0, 40);
    const int textEnd = draw.Percent(25) ? draw.Between(width / 4, width) : width;
    for (int y = 2; y + pitchY < height; y += pitchY) {
        if (draw.Percent(lineGap)) continue;
        for (int x = 2; x + pitchX < textEnd; x += pitchX) {
            if (!draw.Percent(density)) continue;
            const int tall = draw.Between(1, pitchY), wide = draw.Between(1, pitchX + 1);
            const int tone = std::clamp(ink + draw.Between(-inkSpread, inkSpread), 0, 255);
            fill(x, y, std::min(stroke, wide), tall, tone);
            fill(x, y + draw.Between(0, tall), wide, std::min(stroke, tall), tone);
        }
    }
    if (draw.Percent(30)) fill(0, 0, draw.Between(1, width / 6 + 1), height, draw.Between(0, 60));
    if (draw.Percent(30)) {
        const int band = draw.Between(1, width / 6 + 1);
        fill(width - band, 0, band, height, draw.Between(0, 60));
    }

    constexpr int kNoises[] = {0, 0, 3, 8, 20, 60, 160};
    const int noise = kNoises[draw.Between(0, 6)];
    const bool cleanPaper = draw.Percent(30);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < static_cast<int>(page.RowBytes()); ++x) {
            std::uint8_t& pixel = page.Row(y)[x];
            const int spread = cleanPaper && pixel == paper ? 0 : noise;
            const int tone = x < width ? pixel + draw.Between(-spread, spread) : draw.Between(0, 255);
            pixel = static_cast<std::uint8_t>(std::clamp(tone, 0, 255));
        }
    }
    return page;
}

}  // namespace tavrix::test
