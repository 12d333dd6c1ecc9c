// SPDX-License-Identifier: MIT
#include "picture/Orientation.h"

#include <cstring>
#include <utility>

namespace host {
namespace {

// Column and row of the stored picture that upright pixel (x, y) comes from, as a linear rule.
struct SourceRule {
    int x0, y0;                  // source of the upright picture's top left pixel
    int xPerColumn, yPerColumn;  // source step for one upright column
    int xPerRow, yPerRow;        // source step for one upright row
};

SourceRule RuleOf(int orientation, int w, int h) {
    switch (orientation) {
        case 2: return {w - 1, 0, -1, 0, 0, 1};
        case 3: return {w - 1, h - 1, -1, 0, 0, -1};
        case 4: return {0, h - 1, 1, 0, 0, -1};
        case 5: return {0, 0, 0, 1, 1, 0};
        case 6: return {0, h - 1, 0, -1, 1, 0};
        case 7: return {w - 1, h - 1, 0, -1, -1, 0};
        default: return {w - 1, 0, 0, 1, -1, 0};
    }
}

}  // namespace

void Orient(Picture& picture, int orientation) {
    if (orientation < 2 || orientation > 8) return;
    const HostImage& stored = picture.image;
    const bool isTurned = orientation >= 5;
    const SourceRule rule = RuleOf(orientation, stored.Width(), stored.Height());
    HostImage upright(isTurned ? stored.Height() : stored.Width(),
                      isTurned ? stored.Width() : stored.Height(), stored.BitCount());
    const int bytes = stored.BitCount() / 8;
    for (int y = 0; y < upright.Height(); ++y) {
        int sourceX = rule.x0 + y * rule.xPerRow;
        int sourceY = rule.y0 + y * rule.yPerRow;
        std::uint8_t* to = upright.TopRow(y);
        for (int x = 0; x < upright.Width(); ++x, sourceX += rule.xPerColumn, sourceY += rule.yPerColumn) {
            const std::uint8_t* row = stored.TopRow(sourceY);
            if (bytes != 0) {
                std::memcpy(to + x * bytes, row + sourceX * bytes, static_cast<std::size_t>(bytes));
            } else if (row[sourceX / 8] >> (7 - sourceX % 8) & 1) {
                to[x / 8] = static_cast<std::uint8_t>(to[x / 8] | 0x80 >> x % 8);
            }
        }
    }
    picture.image = std::move(upright);
    if (isTurned) std::swap(picture.resolution.x, picture.resolution.y);
}

}  // namespace host
