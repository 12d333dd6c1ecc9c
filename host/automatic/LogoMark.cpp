// SPDX-License-Identifier: MIT
#include "automatic/LogoMark.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "automatic/AreaTree.h"
#include "automatic/Letters.h"

namespace host {
namespace {

constexpr double kMaxWidth = 0.6, kMaxHeight = 0.5;  // of the picture's, that a mark or a logo has
constexpr double kMaxUpright = 0.75;                 // the same width in upright photographs of cards
constexpr int kMaxSlimness = 20;                     // of a mark; slimmer things are rules
constexpr double kMinMark = 0.5;                     // letter heights, the longer side of a mark...
constexpr double kMinLogo = 2;                       // ...and the shorter one of a logo
constexpr int kLettersOnShort = 40;   // letter heights in the shorter side of a picture without letters
constexpr int kMaxOnLight = 1;        // letters on a light mark; a panel for text has more
constexpr double kTall = 1.5;         // letter heights: type of that size is looked at again
constexpr double kMinLikeness = 0.6;  // of heights in a row, and of what they have in common
constexpr double kMinAscender = 0.5;  // of heights within a word...
constexpr double kSpacing = 0.3;      // ...whose letters are so near, in heights of the lower one
constexpr int kRowReach = 3;          // heights to the left and to the right
constexpr int kMinRow = 2;            // other letters that make a row
constexpr double kBlock = 0.8;        // of its box that a block covers, in place of strokes
constexpr double kSolid = 0.18;       // of its height: thickness of a disk or a square
constexpr double kReach = 0.5;        // of its longer side: how far a mark lies at most from its group
constexpr int kMaxForeign = 8;        // letters in the box of a logo that do not belong to it
constexpr double kFoot = 0.5;         // what ink counts at the foot of the text, beside that at its head
constexpr std::size_t kMostCandidates = 1000, kMostMarks = 200;  // those with the most ink

Box BoxOf(const Area& area) {
    return {area.left, area.top, area.right, area.bottom};
}

int WidthOf(const Box& box) {
    return box.right - box.left + 1;
}

int HeightOf(const Box& box) {
    return box.bottom - box.top + 1;
}

Box Around(const Box& a, const Box& b) {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

bool Contains(const Box& box, const Box& inner) {
    return Around(box, inner) == box;
}

// Whether the middle of a letter lies in the box.
bool Holds(const Box& box, const Area& letter) {
    const int x = (letter.left + letter.right) / 2;
    const int y = (letter.top + letter.bottom) / 2;
    return Contains(box, {x, y, x, y});
}

// Columns or rows between them, whichever are more; negative where they overlap.
int GapOf(const Box& a, const Box& b) {
    return std::max(std::max(a.left, b.left) - std::min(a.right, b.right),
                    std::max(a.top, b.top) - std::min(a.bottom, b.bottom)) -
           1;
}

std::vector<bool> MarkDark(const std::vector<Area>& areas) {
    std::vector<bool> isDark;
    for (const Area& area : areas) isDark.push_back(area.isDark);
    return isDark;
}

struct Mark {
    Box box;
    std::int64_t ink;
    bool standsAlone;  // a frame, or with text of its own
};

class LogoSearch {
  public:
    explicit LogoSearch(const HostImage& bits)
        : tree(bits, nullptr), areas(tree.Areas()), isDark(MarkDark(areas)), isLetter(FindLetters(tree)) {
        letterHeight = TypicalHeight(tree, isLetter, isDark);
        if (letterHeight == 0) letterHeight = std::min(tree.Width(), tree.Height()) / kLettersOnShort + 1;
        FindMarks();
    }

    std::optional<Box> Find() const {
        std::optional<Box> logo;
        double most = 0;
        std::vector<bool> isTaken(marks.size());
        for (std::size_t i = 0; i < marks.size(); ++i) {
            if (isTaken[i]) continue;
            const Mark group = Grow(i, isTaken);
            const double weight = WeightOf(group);
            if (weight <= most || !IsLogo(group.box)) continue;
            most = weight;
            logo = group.box;
        }
        return logo;
    }

  private:
    // Tells marks from text.
    void FindMarks() {
        std::vector<std::size_t> candidates;
        lettersOn.resize(areas.size());
        for (std::size_t i = 0; i < areas.size(); ++i) {
            const bool isText = areas[i].isDark && isLetter[i] && !IsFrame(tree, isDark, letterHeight, i);
            if (isText) letters.push_back(i);
            if (isText && areas[i].parent >= 0) ++lettersOn[static_cast<std::size_t>(areas[i].parent)];
            if (MayBeMark(areas[i]) && (!isText || areas[i].Height() >= letterHeight))
                candidates.push_back(i);
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [this](std::size_t a, std::size_t b) { return areas[a].pixels > areas[b].pixels; });
        candidates.resize(std::min(candidates.size(), kMostCandidates));
        std::vector<bool> isMark(areas.size());
        for (const std::size_t i : candidates) {
            isMark[i] = areas[i].isDark ? !StandsInRow(i) : IsLightMark(i);
            if (isMark[i] && marks.size() < kMostMarks)
                marks.push_back({BoxOf(areas[i]), areas[i].pixels,
                                 IsFrame(tree, isDark, letterHeight, i) ||
                                     ContentsOf(tree, isLetter, i).count >= kMinFramed});
        }
        std::erase_if(letters, [&isMark](std::size_t i) { return isMark[i]; });
    }

    bool Fits(const Box& box) const {
        return WidthOf(box) < kMaxWidth * std::max(tree.Width(), tree.Height()) &&
               WidthOf(box) < kMaxUpright * tree.Width() && HeightOf(box) <= kMaxHeight * tree.Height();
    }

    bool MayBeMark(const Area& area) const {
        const int longer = std::max(area.Width(), area.Height());
        const bool isWhole =
            area.left > 0 && area.top > 0 && area.right < tree.Width() - 1 && area.bottom < tree.Height() - 1;
        return isWhole && Fits(BoxOf(area)) && longer >= kMinMark * letterHeight &&
               longer < kMaxSlimness * std::min(area.Width(), area.Height());
    }

    // A light area on a dark one that is too large for a mark, and no panel for text.
    bool IsLightMark(std::size_t i) const {
        const int ground = areas[i].parent;
        return ground >= 0 && !Fits(BoxOf(areas[static_cast<std::size_t>(ground)])) && !isLetter[i] &&
               lettersOn[i] <= kMaxOnLight;
    }

    // Whether a dark area is one of a row of letters, or several of them that have run together.
    bool StandsInRow(std::size_t index) const {
        const Area& area = areas[index];
        if (area.Height() >= letterHeight && area.Thickness() > kSolid * area.Height()) return false;
        if (isLetter[index] && area.Height() < kTall * letterHeight) return true;
        int row = 0;
        for (const std::size_t i : letters) {
            const Area& other = areas[i];
            const int higher = std::max(area.Height(), other.Height());
            const int lower = std::min(area.Height(), other.Height());
            const int common = std::min(area.bottom, other.bottom) - std::max(area.top, other.top) + 1;
            const int gap = std::max(area.left, other.left) - std::min(area.right, other.right) - 1;
            const bool isBlock = static_cast<double>(other.pixels) > kBlock * other.Width() * other.Height();
            if (i == index || isBlock || common < kMinLikeness * lower) continue;
            if (lower >= kMinAscender * higher && std::abs(gap) <= kSpacing * lower) return true;
            if (lower >= kMinLikeness * higher && gap <= kRowReach * higher) ++row;
        }
        return row >= kMinRow;
    }

    // The mark with all that lie near, and near those; text between them keeps them apart.
    Mark Grow(std::size_t seed, std::vector<bool>& isTaken) const {
        Mark group = {marks[seed].box, 0, false};
        for (bool hasGrown = true; hasGrown;) {
            hasGrown = false;
            for (std::size_t i = seed; i < marks.size(); ++i) {
                if (isTaken[i] || !BelongTogether(group.box, marks[i])) continue;
                group = {Around(group.box, marks[i].box), group.ink + marks[i].ink, false};
                isTaken[i] = hasGrown = true;
            }
        }
        return group;
    }

    bool BelongTogether(const Box& group, const Mark& mark) const {
        const Box joined = Around(group, mark.box);
        const double reach = mark.standsAlone ? 0 : kReach * std::max(WidthOf(mark.box), HeightOf(mark.box));
        return GapOf(group, mark.box) <= reach && Fits(joined) &&
               std::none_of(letters.begin(), letters.end(), [&](std::size_t i) {
                   return Holds(joined, areas[i]) && !Holds(group, areas[i]) && !Holds(mark.box, areas[i]);
               });
    }

    double WeightOf(const Mark& group) const {
        int head = tree.Height();
        int foot = 0;
        for (const std::size_t i : letters) {
            head = std::min(head, areas[i].top);
            foot = std::max(foot, areas[i].bottom);
        }
        const double middle = (group.box.top + group.box.bottom) / 2.0;
        const double depth = foot <= head ? 0 : std::clamp((middle - head) / (foot - head), 0.0, 1.0);
        return static_cast<double>(group.ink) * (1 - (1 - kFoot) * depth);
    }

    // Large enough, and no picture behind the text: letters in its box stand on paper of its own.
    bool IsLogo(const Box& box) const {
        return std::min(WidthOf(box), HeightOf(box)) >= kMinLogo * letterHeight &&
               std::count_if(letters.begin(), letters.end(), [&](std::size_t i) {
                   const int paper = areas[i].parent;
                   return Holds(box, areas[i]) &&
                          (paper < 0 || !Contains(box, BoxOf(areas[static_cast<std::size_t>(paper)])));
               }) <= kMaxForeign;
    }

    const AreaTree tree;
    const std::vector<Area>& areas;
    const std::vector<bool> isDark, isLetter;
    int letterHeight;
    std::vector<std::size_t> letters;  // dark ones that are no marks
    std::vector<int> lettersOn;        // every area
    std::vector<Mark> marks;           // those with the most ink first
};

}  // namespace

std::optional<Box> FindLogoMark(const HostImage& bits) {
    return LogoSearch(bits).Find();
}

}  // namespace host
