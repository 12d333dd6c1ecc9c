// SPDX-License-Identifier: MIT
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <vector>

#include "components/ComponentStore.h"
#include "image/DibImage.h"
#include "lines/LineNodes.h"
#include "lines/TextLineGrouper.h"

namespace tavrix {
namespace {

constexpr int kStripWidth = 64;   // columns that one word holds
constexpr int kCounterBits = 15;  // of a count of ink in a column: at most 32,767 rows

// The black pixels of a 1-bit image inside a rectangle, a strip of 64 columns at a time. Strips begin at
// whole bytes; places outside the rectangle or the image hold no ink.
class InkStrips {
  public:
    InkStrips(const DibImage& imageOfInk, const store::Box& area)
        : image(imageOfInk),
          left(std::max<int>(area.left, 0)),
          right(std::min<int>(area.right, image.Width() - 1)),
          bottom(std::max<int>(area.bottom, 0)),
          top(std::min<int>(area.top, image.Height() - 1)) {}

    bool IsEmpty() const { return left > right || bottom > top; }
    int FirstColumn() const { return left & ~7; }
    int LastColumn() const { return right; }
    int FirstRow() const { return bottom; }
    int LastRow() const { return top; }

    // Ink of the strip's columns x .. x + 63 in row y; the highest bit is column x.
    std::uint64_t Word(int x, int y) const {
        const std::uint8_t* const row = image.Row(y);
        const int offset = x / 8;
        const int bytes = std::min(8, static_cast<int>(image.RowBytes()) - offset);
        std::uint64_t word = 0;
        if (bytes == 8) {
            std::memcpy(&word, row + offset, 8);
        } else {
            std::memcpy(&word, row + offset, static_cast<std::size_t>(bytes));
        }
        return ~__builtin_bswap64(word) & MaskOf(x);
    }

    // Columns of a strip with ink in any row.
    std::uint64_t InkedColumns(int x) const {
        std::uint64_t inked = 0;
        for (int y = bottom; y <= top; ++y) inked |= Word(x, y);
        return inked;
    }

    bool IsInked(int y) const {
        for (int x = FirstColumn(); x <= right; x += kStripWidth) {
            if (Word(x, y) != 0) return true;
        }
        return false;
    }

  private:
    std::uint64_t MaskOf(int x) const {
        std::uint64_t mask = ~std::uint64_t{0};
        if (x < left) mask >>= left - x;
        if (right - x < kStripWidth - 1) mask &= ~std::uint64_t{0} << (kStripWidth - 1 - (right - x));
        return mask;
    }

    const DibImage& image;
    const int left;
    const int right;
    const int bottom;
    const int top;
};

// What each column of a component holds: its ink pixels and the rows from its lowest to its highest one.
// A column without ink repeats the span of the column before.
struct ColumnProfiles {
    std::vector<std::uint16_t> ink;
    std::vector<std::uint16_t> span;
};

// Adds the ink of one strip. Counts run in parallel for all columns: plane k holds bit k of each.
void ProfileStrip(const InkStrips& strips, int x, int left, ColumnProfiles& profiles) {
    std::uint64_t planes[kCounterBits] = {};
    int lowest[kStripWidth];
    std::uint64_t seen = 0;
    for (int y = strips.FirstRow(); y <= strips.LastRow(); ++y) {
        const std::uint64_t word = strips.Word(x, y);
        std::uint64_t carry = word;
        for (int k = 0; carry != 0 && k < kCounterBits; ++k) {
            const std::uint64_t both = planes[k] & carry;
            planes[k] ^= carry;
            carry = both;
        }
        for (std::uint64_t fresh = word & ~seen; fresh != 0;) {
            const int bit = std::countl_zero(fresh);
            lowest[bit] = y;
            fresh &= ~(std::uint64_t{1} << (kStripWidth - 1 - bit));
        }
        seen |= word;
    }
    std::uint64_t pending = seen;
    for (int y = strips.LastRow(); pending != 0; --y) {
        for (std::uint64_t fresh = strips.Word(x, y) & pending; fresh != 0;) {
            const int bit = std::countl_zero(fresh);
            const std::uint64_t column = std::uint64_t{1} << (kStripWidth - 1 - bit);
            fresh &= ~column;
            pending &= ~column;
            int count = 0;
            for (int k = 0; k < kCounterBits; ++k) count |= (planes[k] & column) != 0 ? 1 << k : 0;
            const std::size_t index = static_cast<std::size_t>(x + bit - left);
            profiles.ink[index] = static_cast<std::uint16_t>(count);
            profiles.span[index] = static_cast<std::uint16_t>(y - lowest[bit] + 1);
        }
    }
}

ColumnProfiles ProfileColumns(const DibImage& image, const store::Box& box) {
    const std::size_t columns = static_cast<std::size_t>(box.right - box.left + 1);
    ColumnProfiles profiles{std::vector<std::uint16_t>(columns), std::vector<std::uint16_t>(columns)};
    const InkStrips strips(image, box);
    if (!strips.IsEmpty()) {
        for (int x = strips.FirstColumn(); x <= strips.LastColumn(); x += kStripWidth) {
            ProfileStrip(strips, x, box.left, profiles);
        }
    }
    for (std::size_t i = 1; i < columns; ++i) {
        if (profiles.ink[i] == 0) profiles.span[i] = profiles.span[i - 1];
    }
    return profiles;
}

// The box of the ink inside a box. Where there is none each side ends at the one across from it, which
// leaves the box inside out: its right side is the left one of before, and so on.
store::Box ShrinkToInk(const DibImage& image, const store::Box& box) {
    const store::Box insideOut{box.right, box.bottom, box.left, box.top};
    const InkStrips strips(image, box);
    if (strips.IsEmpty()) return insideOut;
    std::optional<int> left;
    int right = 0;
    for (int x = strips.FirstColumn(); x <= strips.LastColumn(); x += kStripWidth) {
        const std::uint64_t inked = strips.InkedColumns(x);
        if (inked == 0) continue;
        if (!left) left = x + std::countl_zero(inked);
        right = x + kStripWidth - 1 - std::countr_zero(inked);
    }
    if (!left) return insideOut;
    int bottom = strips.FirstRow();
    while (!strips.IsInked(bottom)) ++bottom;
    int top = strips.LastRow();
    while (!strips.IsInked(top)) --top;
    return {static_cast<std::int16_t>(*left), static_cast<std::int16_t>(top),
            static_cast<std::int16_t>(right), static_cast<std::int16_t>(bottom)};
}

enum Mark : std::uint8_t { kPlain, kCandidate, kCut };

// Marks columns where the extent of the ink jumps as cuts, thin ones as candidates, away from both ends.
std::vector<std::uint8_t> MarkColumns(const ColumnProfiles& profiles, int height, int pieceWidth) {
    const std::vector<std::uint16_t>& ink = profiles.ink;
    const std::vector<std::uint16_t>& span = profiles.span;
    const int columns = static_cast<int>(ink.size());
    const int border = std::max(2 * pieceWidth / 3, 1);
    std::vector<std::uint8_t> marks(ink.size(), kPlain);
    for (int column = border; column < columns - border; ++column) {
        const std::size_t i = static_cast<std::size_t>(column);
        if (4 * std::abs(span[i] - span[i + 1]) > 2 * height) {
            marks[i] = kCut;
        } else if (4 * ink[i] <= height && span[i] < height / 3 && std::abs(span[i] - ink[i]) < ink[i] / 2) {
            marks[i] = kCandidate;
        }
    }
    return marks;
}

// Turns the thinnest column of each run of marked columns into a cut. A run begins at a candidate.
void CutThinnestOfRuns(const std::vector<std::uint16_t>& ink, std::vector<std::uint8_t>& marks) {
    for (std::size_t i = 0; i < marks.size(); ++i) {
        if (marks[i] != kCandidate) continue;
        std::size_t thinnest = i;
        for (; i < marks.size() && marks[i] != kPlain; ++i) {
            if (ink[i] < ink[thinnest]) thinnest = i;
        }
        if (thinnest != 0) marks[thinnest] = kCut;
    }
}

// The cuts that stay: of cuts closer than two thirds of a piece the thinner one, the earlier one if equal.
// The component's first column counts as the cut before the first.
std::vector<int> ThinnedCuts(const std::vector<std::uint16_t>& ink, const std::vector<std::uint8_t>& marks,
                             int pieceWidth) {
    std::vector<int> cuts{0};
    for (int column = 1; column < static_cast<int>(marks.size()); ++column) {
        const std::size_t i = static_cast<std::size_t>(column);
        if (marks[i] != kCut) continue;
        if (3 * (column - cuts.back()) < 2 * pieceWidth) {
            if (ink[i] >= ink[static_cast<std::size_t>(cuts.back())]) continue;
            cuts.pop_back();
        }
        cuts.push_back(column);
    }
    if (cuts.front() == 0) cuts.erase(cuts.begin());
    return cuts;
}

// None when memory runs out.
std::optional<std::vector<int>> FindCuts(const DibImage& image, const store::Box& box, int height,
                                         int pieceWidth) {
    try {
        const ColumnProfiles profiles = ProfileColumns(image, box);
        std::vector<std::uint8_t> marks = MarkColumns(profiles, height, pieceWidth);
        CutThinnestOfRuns(profiles.ink, marks);
        return ThinnedCuts(profiles.ink, marks, pieceWidth);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

// Columns between two neighbours in a line; 0 when they overlap or one is missing.
int GapBetween(const ComponentNode* left, const ComponentNode* right) {
    return left == nullptr || right == nullptr ? 0 : std::max(right->left - left->right, 0);
}

// The mean width of components that are not wide for their height, else the mean height of all.
int MeanCharacterWidth(const ComponentNode& line) {
    std::uint64_t widths = 0;
    std::uint64_t heights = 0;
    std::uint64_t narrow = 0;
    std::uint64_t all = 0;
    lines::ForEachComponent(line, [&](const ComponentNode* node) {
        const int width = store::WidthOf(*node);
        const int height = store::HeightOf(*node);
        heights += height;
        ++all;
        if (2 * width > 3 * height) return;
        widths += width;
        ++narrow;
    });
    if (narrow != 0) return static_cast<int>(widths / narrow);
    return all != 0 ? static_cast<int>(heights / all) : 0;
}

}  // namespace

void TextLineGrouper::CutComponent(ComponentStore& store, ComponentNode* component, int pieceWidth) const {
    store::Box box = lines::BoxOf(*component);
    if (box.left > box.right || box.bottom > box.top) return;
    const std::optional<std::vector<int>> cuts =
        FindCuts(*image, box, store::HeightOf(*component), pieceWidth);
    if (!cuts) return;
    const int left = box.left;
    for (const int cut : *cuts) {
        const std::int16_t end = static_cast<std::int16_t>(left + cut);
        const store::Box piece = ShrinkToInk(*image, {box.left, box.top, end, box.bottom});
        if (store::InsertComponent(store, component->parent, component->prev, component, piece) == nullptr) {
            break;  // the store is full: the rest stays one component
        }
        box.left = end;
    }
    lines::SetBox(*component, ShrinkToInk(*image, box));
}

void TextLineGrouper::SplitWideComponents(ComponentStore& store) const {
    lines::ForEachLine(store, [&](ComponentNode* line) {
        store::SortChildren(line, true);
        const int meanWidth = MeanCharacterWidth(*line);
        if (meanWidth == 0) return;
        lines::ForEachComponent(*line, [&](ComponentNode* component) {
            const int componentWidth = store::WidthOf(*component);
            const int pieces = (10 * componentWidth / meanWidth + 5) / 10;
            const int gap =
                std::min(GapBetween(component->prev, component), GapBetween(component, component->next));
            if (pieces > 1 && componentWidth > 4 * gap) {
                CutComponent(store, component, componentWidth / pieces);
            }
        });
    });
}

}  // namespace tavrix
