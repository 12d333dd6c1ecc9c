// SPDX-License-Identifier: MIT
#include "findings/Overlay.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

struct Colour {
    std::uint8_t blue, green, red;
};

constexpr Colour kComponentColour = {40, 40, 230};
constexpr Colour kLineColour = {60, 170, 0};
constexpr Colour kBlockColour = {240, 90, 0};
constexpr Colour kTrueLineColour = {0, 140, 255};
constexpr Colour kLogoColour = {200, 30, 160};

// Pictures get one more pixel of line width for this many pixels of their larger side.
constexpr int kSidePerWidth = 1200;

void FillRow(const HostImage& image, int y, int x0, int x1, const Colour& colour) {
    if (y < 0 || y >= image.Height()) return;
    std::uint8_t* row = image.TopRow(y);
    for (int x = std::max(x0, 0); x <= std::min(x1, image.Width() - 1); ++x) {
        row[3 * x] = colour.blue;
        row[3 * x + 1] = colour.green;
        row[3 * x + 2] = colour.red;
    }
}

// A frame of the given width around the box, which stays free itself.
void DrawFrame(const HostImage& image, const Box& box, int width, const Colour& colour) {
    for (int y = box.top - width; y <= box.bottom + width; ++y) {
        if (y < box.top || y > box.bottom) {
            FillRow(image, y, box.left - width, box.right + width, colour);
        } else {
            FillRow(image, y, box.left - width, box.left - 1, colour);
            FillRow(image, y, box.right + 1, box.right + width, colour);
        }
    }
}

}  // namespace

HostImage DrawOverlay(HostImage picture, const Findings& findings) {
    HostImage image = picture.BitCount() == 24 ? std::move(picture) : ToColour(picture);
    const int width = 1 + std::max(image.Width(), image.Height()) / kSidePerWidth;
    const auto drawLines = [&](const std::vector<FoundLine>& lines) {
        for (const FoundLine& line : lines) {
            for (const FoundComponent& component : line.components) {
                DrawFrame(image, component.box, width, kComponentColour);
            }
        }
        for (const FoundLine& line : lines) DrawFrame(image, line.box, width + 1, kLineColour);
    };
    if (findings.blocks) {
        for (const FoundBlock& block : *findings.blocks) {
            // A page with lines of its own shows those; the lines of blocks would hide them.
            if (!findings.lines) drawLines(block.lines);
            DrawFrame(image, block.box, 2 * width + 1, kBlockColour);
        }
    }
    if (findings.lines) drawLines(*findings.lines);
    if (findings.trueLine && *findings.trueLine)
        DrawFrame(image, **findings.trueLine, 3 * width, kTrueLineColour);
    if (findings.logo && *findings.logo) DrawFrame(image, **findings.logo, 3 * width, kLogoColour);
    return image;
}

}  // namespace host
