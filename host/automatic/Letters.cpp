// SPDX-License-Identifier: MIT
#include "automatic/Letters.h"

#include <algorithm>

namespace host {
namespace {

constexpr int kMinHeight = 6;          // pixels; no reader makes out less
constexpr int kMaxShareOfPage = 4;     // a letter is at most a fourth of the page high
constexpr int kMaxWidth = 5;           // in heights: several letters may have run together
constexpr int kMaxSlimness = 12;       // heights in a width
constexpr int kMinCover = 8;           // per cent of its box that a letter covers
constexpr double kLikeHeight = 0.6;    // of the higher one of two neighbours
constexpr double kGap = 1.2;           // between neighbours, in heights of the higher one
constexpr double kOverlap = 0.6;       // that neighbours have in common, of the lower one's height
constexpr double kFrameCover = 0.2;    // of its box that a frame covers at most
constexpr double kMinComplexity = 26;  // contour squared by pixels
static_assert(kGap <= kLikeHeight * kNeighbourReach);

}  // namespace

bool HasLetterShape(const Area& area, int pageHeight) {
    const std::int64_t width = area.Width();
    const std::int64_t height = area.Height();
    return height >= kMinHeight && height * kMaxShareOfPage <= pageHeight && width <= kMaxWidth * height &&
           height <= kMaxSlimness * width && area.pixels * 100 >= kMinCover * width * height;
}

bool MayFollow(const Area& left, const Area& right) {
    const int higher = std::max(left.Height(), right.Height());
    const int lower = std::min(left.Height(), right.Height());
    return left.isDark == right.isDark && left.parent == right.parent && lower >= kLikeHeight * higher &&
           right.left - left.right - 1 <= kGap * higher;
}

bool AreNeighbours(const Area& left, const Area& right) {
    const int lower = std::min(left.Height(), right.Height());
    const int common = std::min(left.bottom, right.bottom) - std::max(left.top, right.top) + 1;
    return common >= kOverlap * lower && MayFollow(left, right);
}

bool HasStrokes(const Area& area) {
    const auto contour = static_cast<double>(area.contour);
    return contour * contour >= kMinComplexity * static_cast<double>(area.pixels);
}

std::vector<bool> FindLetters(const AreaTree& tree) {
    const std::vector<Area>& areas = tree.Areas();
    std::vector<bool> hasShape(areas.size());
    for (std::size_t i = 0; i < areas.size(); ++i) hasShape[i] = HasLetterShape(areas[i], tree.Height());
    std::vector<bool> isLetter(areas.size());
    for (std::size_t i = 0; i < areas.size(); ++i) {
        if (!hasShape[i]) continue;
        const Area& area = areas[i];
        const AreaTree::Run* row = tree.Row((area.top + area.bottom) / 2);
        const AreaTree::Run* rowEnd = tree.Row((area.top + area.bottom) / 2 + 1) - 1;
        const double reach = area.right + 1 + kNeighbourReach * area.Height();
        const auto* run = std::upper_bound(row, rowEnd, area.left,
                                           [](int x, const AreaTree::Run& r) { return x < r.start; });
        for (; run < rowEnd && run->start <= reach; ++run) {
            const auto k = static_cast<std::size_t>(run->area);
            if (k == i || !hasShape[k] || !AreNeighbours(area, areas[k])) continue;
            isLetter[i] = isLetter[k] = true;
            break;
        }
    }
    return isLetter;
}

Contents ContentsOf(const AreaTree& tree, const std::vector<bool>& isInk, std::size_t index) {
    const Area& box = tree.Areas()[index];
    Contents contents;
    for (int y = box.top; y <= box.bottom; ++y) {
        const AreaTree::Run* rowEnd = tree.Row(y + 1) - 1;
        const auto* run = std::lower_bound(tree.Row(y), rowEnd, box.left,
                                           [](const AreaTree::Run& r, int x) { return r.start < x; });
        for (std::size_t last = index; run < rowEnd && run->start <= box.right; ++run) {
            const auto k = static_cast<std::size_t>(run->area);
            const Area& area = tree.Areas()[k];
            // An area is met in several runs of its middle row.
            if (k == index || k == last || !isInk[k] || (area.top + area.bottom) / 2 != y) continue;
            last = k;
            const bool isInside = area.left >= box.left && area.right <= box.right && area.top >= box.top &&
                                  area.bottom <= box.bottom;
            if (!isInside || !HasStrokes(area)) continue;
            ++contents.count;
            contents.tallest = std::max(contents.tallest, area.Height());
        }
    }
    return contents;
}

bool IsFrame(const AreaTree& tree, const std::vector<bool>& isInk, int letterHeight, std::size_t index) {
    const Area& area = tree.Areas()[index];
    if (static_cast<double>(area.pixels) >= kFrameCover * area.Width() * area.Height()) return false;
    const Contents contents = ContentsOf(tree, isInk, index);
    return contents.count >= kMinFramed || contents.tallest >= letterHeight;
}

int TypicalHeight(const AreaTree& tree, const std::vector<bool>& isLetter, const std::vector<bool>& isInk) {
    std::vector<int> heights;
    for (std::size_t i = 0; i < isInk.size(); ++i) {
        if (isInk[i] && isLetter[i]) heights.push_back(tree.Areas()[i].Height());
    }
    if (heights.size() < kFewLetters) return 0;
    const auto middle = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

}  // namespace host
