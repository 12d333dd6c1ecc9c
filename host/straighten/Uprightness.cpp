// SPDX-License-Identifier: MIT
#include "straighten/Uprightness.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "automatic/Automatic.h"

namespace host {
namespace {

constexpr double kGap = 0.5;         // between close letters, in heights of the higher one
constexpr std::size_t kLongRow = 8;  // letters

// In typical heights of the letters of a row:
constexpr double kOff = 0.12;           // from the row's line, what stands out above or below it
constexpr double kSimpleOff = 0.35;     // the same of simple strokes: brackets stand out of figures by less
constexpr double kLeastOff = 1.5;       // pixels
constexpr double kSimple = 4;           // contour of simple strokes, in their height
constexpr std::size_t kNear = 5;        // letters to both sides that show where the row's line is
constexpr std::size_t kLongEnough = 6;  // letters that show how a row slants

// In widths of a letter, what its left or right side differs from a straight line on the average:
constexpr double kStraight = 0.04;
constexpr double kRagged = 0.08;
constexpr double kSlant = 0.35;                // of a straight side, as in italics
constexpr double kNarrow = 0.35, kWide = 1.3;  // widths of letters in their heights
constexpr double kContradiction = 2;           // standard deviations, of stems and the rest for unlike ways
constexpr double kMajority = 2;                // for one way beside those for the other
constexpr double kStemShare = 0.08;            // of the letters; figures have stems to the right, but few

double MiddleOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Letters on their side follow each other from line to line, with gaps.
int CloseLetters(const TextRow& row) {
    if (row.size() < kLongRow) return 0;
    int count = 0;
    for (std::size_t i = 1; i < row.size(); ++i) {
        const int gap = row[i].left - row[i - 1].right - 1;
        count += gap < kGap * std::max(row[i].Height(), row[i - 1].Height());
    }
    return count;
}

// Letters that speak for upright and for upside down.
struct Votes {
    int upright = 0, upsideDown = 0;
};

// In standard deviations; 0 where the letters do not agree well.
double Surplus(const Votes& votes) {
    const auto [fewer, more] = std::minmax({votes.upright, votes.upsideDown});
    if (more < kMajority * fewer) return 0;
    return (votes.upright - votes.upsideDown) / std::sqrt(std::max(1, fewer + more));
}

// Where the letters of a row stand, without its slant.
class RowLines {
  public:
    explicit RowLines(const TextRow& letters) : row(letters) {
        std::vector<double> heights;
        for (const Area& letter : row) heights.push_back(letter.Height());
        height = MiddleOf(heights);
        const double slant = Slant();
        for (const Area& letter : row) {
            const double drop = slant * 0.5 * (letter.left + letter.right);
            tops.push_back(letter.top - drop);
            bottoms.push_back(letter.bottom - drop);
        }
    }

    // Tops differ more than bottoms do: small letters and capitals stand on one line, and fewer letters reach
    // below it than above the small ones.
    Votes Count() const {
        Votes votes;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool isSimple = static_cast<double>(row[i].contour) < kSimple * row[i].Height();
            const double limit = std::max(kLeastOff, (isSimple ? kSimpleOff : kOff) * height);
            const bool isTopOff = Off(tops, i) > limit, isBottomOff = Off(bottoms, i) > limit;
            votes.upright += isTopOff && !isBottomOff;
            votes.upsideDown += isBottomOff && !isTopOff;
        }
        return votes;
    }

  private:
    double Slant() const {
        if (row.size() < kLongEnough) return 0;
        const std::size_t half = row.size() / 2;
        std::vector<double> slants;
        for (std::size_t i = half; i < row.size(); ++i) {
            const Area &from = row[i - half], &to = row[i];
            const int along = to.left + to.right - from.left - from.right;
            if (along > 0)
                slants.push_back(static_cast<double>(to.top + to.bottom - from.top - from.bottom) / along);
        }
        return slants.empty() ? 0 : MiddleOf(std::move(slants));
    }

    static double Off(const std::vector<double>& ends, std::size_t i) {
        const std::size_t first = i - std::min(i, kNear), last = std::min(ends.size(), i + kNear + 1);
        return std::fabs(ends[i] - MiddleOf({ends.begin() + static_cast<std::ptrdiff_t>(first),
                                             ends.begin() + static_cast<std::ptrdiff_t>(last)}));
    }

    const TextRow& row;
    double height;
    std::vector<double> tops, bottoms;
};

// One side of a letter: how far the ink begins from its box, from row to row.
class Side {
  public:
    void Add(int y, int offset) {
        ++count;
        sumY += y;
        sumYy += static_cast<double>(y) * y;
        sumX += offset;
        sumXx += static_cast<double>(offset) * offset;
        sumXy += static_cast<double>(y) * offset;
    }

    // The mean difference from the straight line that fits best.
    double Raggedness() const {
        const double varianceY = sumYy - sumY * sumY / count, varianceX = sumXx - sumX * sumX / count;
        const double common = sumXy - sumX * sumY / count;
        const double rest = varianceY > 0 ? varianceX - common * common / varianceY : varianceX;
        return std::sqrt(std::max(0.0, rest) / count);
    }
    double Slope() const {
        const double varianceY = sumYy - sumY * sumY / count;
        return varianceY > 0 ? (sumXy - sumX * sumY / count) / varianceY : 0;
    }

  private:
    double count = 0, sumY = 0, sumYy = 0, sumX = 0, sumXx = 0, sumXy = 0;
};

// The stem of B, D, E, F, K, L, P, R, b, h, k is to the left. What has stems on both sides says nothing.
void CountStem(const HostImage& ink, const Area& letter, Votes& votes) {
    Side left, right;
    for (int y = letter.top; y <= letter.bottom; ++y) {
        const std::uint8_t* row = ink.TopRow(y);
        const auto isBlack = [row](int x) { return (row[x / 8] >> (7 - x % 8) & 1) == 0; };
        int from = letter.left, to = letter.right;
        while (from <= to && !isBlack(from)) ++from;
        while (from <= to && !isBlack(to)) --to;
        if (from > to) continue;
        left.Add(y - letter.top, from - letter.left);
        right.Add(y - letter.top, letter.right - to);
    }
    const auto isStem = [&](const Side& side, const Side& other) {
        return side.Raggedness() < kStraight * letter.Width() &&
               other.Raggedness() > kRagged * letter.Width() && std::fabs(side.Slope()) < kSlant;
    };
    votes.upright += isStem(left, right);
    votes.upsideDown += isStem(right, left);
}

}  // namespace

Uprightness UprightnessOf(const HostImage& gray) {
    const TextReading reading = ReadText(gray);
    Uprightness result;
    Votes ends, stems;
    int count = 0;
    for (const TextRow& row : reading.rows) {
        result.letters += CloseLetters(row);
        const Votes more = RowLines(row).Count();
        ends.upright += more.upright;
        ends.upsideDown += more.upsideDown;
        for (const Area& letter : row) {
            const double width = static_cast<double>(letter.Width()) / letter.Height();
            if (width < kNarrow || width > kWide) continue;
            ++count;
            CountStem(reading.ink, letter, stems);
        }
    }
    // Few stems count only against: figures have some to the right, and Greek and Cyrillic letters, which
    // reach below the line more often than above, to the left.
    const double surplus = Surplus({ends.upright + stems.upright, ends.upsideDown + stems.upsideDown});
    const bool areFew = std::abs(stems.upright - stems.upsideDown) < kStemShare * count;
    const double sure = areFew ? Surplus(ends) : surplus;
    const double above = Surplus(ends), left = Surplus(stems);
    const bool contradict = above * left < 0 && std::min(std::fabs(above), std::fabs(left)) >= kContradiction;
    if (surplus * sure > 0 && !contradict)
        result.surplus = std::fabs(sure) < std::fabs(surplus) ? sure : surplus;
    return result;
}

}  // namespace host
