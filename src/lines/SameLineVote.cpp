// SPDX-License-Identifier: MIT
#include "lines/SameLineVote.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "image/Ratio.h"
#include "image/Rect.h"

namespace tavrix::lines {
namespace {

// "Height" is the type's: the greater quartile height of the two lines.
constexpr int kDotSide = 10;            // pixels; a component below this in both sides may be a dot
constexpr int kSmallSide = 15;          // pixels; one below this in both sides is compared with a larger one
constexpr Ratio kStemAspect{19, 10};    // times that a dot's stem is higher than wide, exclusive
constexpr Ratio kTallUnion{13, 10};     // heights of a pair that together stand out of a line
constexpr Ratio kTooTallUnion{14, 10};  // heights of a pair that cannot be a dot and its stem
constexpr Ratio kDotRise{1, 3};         // stem heights between a dot and a stem that stand out, exclusive
constexpr Ratio kDotGapShare{3, 10};    // of the pair's rows, between a dot and its stem, exclusive
constexpr int kDotGap = 6;              // rows between two pieces, a dot and its stem as well, exclusive
constexpr Ratio kFullHeight{2, 3};      // heights; a taller component serves as a reference
constexpr int kSight = 2;               // heights, columns that a reference is looked for in
constexpr int kFarSight = 3;            // heights, where no reference has decided
constexpr int kNearSlack = 5;           // rows that a pair may stand out from the component that holds it
constexpr int kRefSlack = 7;            // rows that a pair may stand out from its reference
constexpr int kRefExcess = 3;           // rows that a reference may be higher than the type, exclusive
constexpr int kPieceGap = 11;           // rows between the pieces of a tall letter, exclusive
constexpr Ratio kPieceUnion{12, 10};    // heights of a letter that two pieces make
constexpr Ratio kHolderHeight{12, 10};  // heights of a component that holds a pair, exclusive
constexpr Ratio kPlainHeight{15, 10};   // heights of a neighbour that a component goes with, exclusive
constexpr Ratio kLowHeight{1, 2};       // heights; only lower ones look beyond their neighbours

// One vote: the components of the line with fewer look for their counterparts in the other.
class Vote {
  public:
    Vote(const MeasuredLine& a, const MeasuredLine& b)
        : shorter(b.Count() <= a.Count() ? b : a),
          other(b.Count() <= a.Count() ? a : b),
          height(std::max(a.quartileHeight, b.quartileHeight)) {}

    bool Passes() const {
        int votes = 0;
        for (const LetterBox& c : shorter.boxes) votes += VotesOf(c);
        return 2 * votes > shorter.Count();
    }

  private:
    enum class Verdict { kVote, kNext, kLookAround };

    int VotesOf(const LetterBox& c) const {
        const std::vector<LetterBox>& boxes = other.boxes;
        const int stop =
            static_cast<int>(std::partition_point(boxes.begin(), boxes.end(),
                                                  [&](const LetterBox& d) { return d.x0 <= c.x1; }) -
                             boxes.begin());
        // None before the first one whose reach comes to c stands over c's columns.
        const int start =
            static_cast<int>(std::partition_point(boxes.begin(), boxes.begin() + stop,
                                                  [&](const LetterBox& d) { return d.reach < c.x0; }) -
                             boxes.begin());
        int votes = 0;
        bool overlapped = false;
        for (int d = start; d < stop; ++d) {
            const Rect shared = Intersection(c, At(d));
            if (shared.x0 > shared.x1) continue;
            overlapped = true;
            switch (Judge(c, d)) {
                case Verdict::kVote: return votes + 1;
                case Verdict::kNext: break;
                case Verdict::kLookAround: votes += FitsBesideD(c, d) ? 1 : 0; break;
            }
        }
        if (!overlapped) return FitsBetween(c, stop) ? 1 : 0;
        return votes;
    }

    // c and the component d of the other line stand over the same columns.
    Verdict Judge(const LetterBox& c, int index) const {
        const LetterBox& d = At(index);
        const Rect both = Union(c, d);
        const int unionHeight = both.y1 - both.y0 + 1;
        const int gap = RowGap(c, d);
        const bool isNear = gap < kDotGapShare * unionHeight;

        if (unionHeight >= kTallUnion * height) {
            if (unionHeight >= kTooTallUnion * height) return Verdict::kNext;
            const bool isDotAbove = (IsDotOf(c, d) && c.y0 - d.y1 < kDotRise * d.height) ||
                                    (IsDotOf(d, c) && d.y0 - c.y1 < kDotRise * c.height);
            return isDotAbove && isNear ? Verdict::kVote : Verdict::kNext;
        }
        if (gap < kDotGap) return Verdict::kVote;
        if ((IsDotOf(c, d) || IsDotOf(d, c)) && isNear) return Verdict::kVote;

        const LetterBox* const ref = ReferenceNear(c, index);
        if (ref == nullptr) return Verdict::kLookAround;
        if (IsSmall(c) && IsSmall(d) && StandsIn(both, *ref, kNearSlack)) return Verdict::kVote;
        if (std::abs(both.y1 - ref->y1) > kRefSlack && std::abs(both.y0 - ref->y0) > kRefSlack) {
            const bool isInside =
                ref->height < height + kRefExcess && unionHeight < height && StandsIn(both, *ref, 0);
            return isInside ? Verdict::kVote : Verdict::kLookAround;
        }
        const bool isPiece =
            gap < kPieceGap || unionHeight <= kPieceUnion * height || d.height <= kFullHeight * height;
        return isPiece ? Verdict::kVote : Verdict::kNext;
    }

    static bool IsDot(const LetterBox& c) { return c.width < kDotSide && c.height < kDotSide; }
    static bool IsSmall(const LetterBox& c) { return c.width < kSmallSide && c.height < kSmallSide; }
    static bool IsDotOf(const LetterBox& dot, const LetterBox& stem) {
        return IsDot(dot) && stem.height > kStemAspect * stem.width;
    }
    // The rows of a rectangle lie strictly inside a component's, given so much slack.
    template <class Rows>
    static bool StandsIn(const Rect& rect, const Rows& e, int slack) {
        return rect.y1 < e.y1 + slack && rect.y0 > e.y0 - slack;
    }

    // A component of full height beside d: the first one to the left, or the first one to the right when
    // its height is nearer to the lines'.
    const LetterBox* ReferenceNear(const LetterBox& c, int d) const {
        const auto isTall = [&](const LetterBox& e) { return e.height > kFullHeight * height; };
        const auto holdsTall = [&](const Extent& e) { return e.greatest > kFullHeight * height; };
        const LetterBox* ref = FindBack(d - 1, c.x0 - kSight * height, isTall, holdsTall);
        const LetterBox* const after = FindForward(d + 1, c.x1 + kSight * height, isTall, holdsTall);
        if (after != nullptr &&
            (ref == nullptr || std::abs(after->height - height) < std::abs(ref->height - height))) {
            ref = after;
        }
        return ref;
    }

    // Whether c and d together fit into the rows of a component beside them.
    bool FitsBesideD(const LetterBox& c, int d) const {
        if (c.height >= height) return false;
        const Rect both = Union(c, At(d));
        const auto holds = [&](const LetterBox& e) {
            return e.height < kHolderHeight * height && StandsIn(both, e, kNearSlack);
        };
        const auto mayHold = [&](const Extent& e) {
            return e.least < kHolderHeight * height && e.greatest > both.y1 - both.y0 - 2 * kNearSlack &&
                   StandsIn(both, e, kNearSlack);
        };
        return FindBack(d - 1, c.x0 - kFarSight * height, holds, mayHold) != nullptr ||
               FindForward(d, c.x1 + kFarSight * height, holds, mayHold) != nullptr;
    }

    // Whether c, which stands over none of the other line's columns, shares rows with the components to
    // its left and right. `stop` is the first one to the right.
    bool FitsBetween(const LetterBox& c, int stop) const {
        const auto isPlain = [&](const LetterBox& e) { return e.height < kPlainHeight * height; };
        for (const int beside : {stop - 1, stop}) {
            if (beside >= 0 && beside < other.Count() && isPlain(At(beside)) && RowGap(c, At(beside)) < 0) {
                return true;
            }
        }
        if (c.height >= kLowHeight * height) return false;
        const auto isLevel = [&](const LetterBox& e) {
            return isPlain(e) && (RowGap(c, e) < 0 || (IsDot(c) && RowGap(c, e) < kDotGap));
        };
        const auto holdsLevel = [&](const Extent& e) {
            return e.least < kPlainHeight * height && RowGap(c, Rect{c.x0, e.y0, c.x1, e.y1}) < kDotGap;
        };
        return FindBack(stop - 1, c.x0 - kSight * height, isLevel, holdsLevel) != nullptr ||
               FindForward(stop, c.x1 + kSight * height, isLevel, holdsLevel) != nullptr;
    }

    // The first component of the other line that passes, from an index towards the start while they reach
    // column minX1, or towards the end while they begin by maxX0. mayPass tells by their extent whether one
    // of several may.
    template <class Test, class ExtentTest>
    const LetterBox* FindBack(int from, int minX1, Test&& passes, ExtentTest&& mayPass) const {
        for (int i = from; i >= 0; --i) {
            if (!other.extents.IsEmpty()) i = other.extents.Last(other.boxes, i, mayPass);
            if (i < 0 || At(i).x1 < minX1) break;
            if (passes(At(i))) return &At(i);
        }
        return nullptr;
    }
    template <class Test, class ExtentTest>
    const LetterBox* FindForward(int from, int maxX0, Test&& passes, ExtentTest&& mayPass) const {
        for (int i = from; i < other.Count(); ++i) {
            if (!other.extents.IsEmpty()) i = other.extents.First(other.boxes, i, mayPass);
            if (i >= other.Count() || At(i).x0 > maxX0) break;
            if (passes(At(i))) return &At(i);
        }
        return nullptr;
    }
    const LetterBox& At(int index) const { return other.boxes[static_cast<std::size_t>(index)]; }

    const MeasuredLine& shorter;
    const MeasuredLine& other;
    const int height;
};

}  // namespace

bool AreSameLine(const MeasuredLine& a, const MeasuredLine& b) {
    return Vote(a, b).Passes();
}

}  // namespace tavrix::lines
