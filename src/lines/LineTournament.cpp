// SPDX-License-Identifier: MIT
#include "lines/LineTournament.h"

#include <cstdlib>

#include "image/Ratio.h"

namespace tavrix::lines {
namespace {

// Of the picture
constexpr Ratio kShortLine{1, 2};    // of its width; a line of few components is short below this
constexpr Ratio kLeftPart{1, 3};     // of its width, where main lines begin
constexpr Ratio kRightPart{1, 2};    // of its width, where few components are no main line
constexpr Ratio kDisplayType{1, 4};  // of its height; type above this is of display size ..
constexpr Ratio kHugeType{1, 2};     // .. and from here on too large for a short label
constexpr Ratio kTinyType{1, 6};     // of its height; the best line's type below this gives way to larger
// Of type
constexpr int kSmallType = 20;         // rows; below this the best line's type counts as small
constexpr Ratio kComparable{3, 4};     // heights; type above this part of the other is as good
constexpr int kLikeHeight = 5;         // rows that the heights of like halves differ by at most
constexpr int kLowerHeight = 10;       // rows by which a lower left half loses at once
constexpr int kMuchHigherHeight = 15;  // rows that a right half is higher to make up for the left one
// Of lines
constexpr int kShortLabelWidth = 250;  // columns; a short label is no wider
constexpr Ratio kNearlyAsWide{3, 4};   // widths of the best line

bool IsShort(const Contender& contender, int pageWidth) {
    return contender.width < kShortLine * pageWidth && contender.profile.IsOfFewComponents();
}

}  // namespace

LineTournament::LineTournament(const ImageFrame& page, int typical, int middle)
    : pageWidth(page.width), pageHeight(page.height), typicalHeight(typical), midRow(middle) {}

bool LineTournament::Beats(const Contender& candidate, const Contender& best) const {
    if (!IsBig(candidate, best) || !Fits(candidate, best)) return false;
    if (StandsOutOnTheLeft(candidate, best) || ReplacesShortLine(candidate, best)) return true;
    return candidate.line->right < best.line->left || !YieldsTo(candidate, best);
}

bool LineTournament::IsBig(const Contender& candidate, const Contender& best) const {
    const LineProfile& profile = candidate.profile;
    return profile.CharacterHeight() > kComparable * typicalHeight ||
           (best.profile.height < kTinyType * pageHeight && profile.height > best.profile.height);
}

// A short label wins only when it is as wide as the best line, or nearly so and larger, or of display size
// beside small type.
bool LineTournament::Fits(const Contender& candidate, const Contender& best) const {
    const LineProfile& profile = candidate.profile;
    const bool isShortLabel = candidate.width <= kShortLine * pageWidth && profile.IsOfFewComponents() &&
                              candidate.width <= kShortLabelWidth;
    if (!isShortLabel || candidate.width >= best.width) return true;
    if (candidate.width >= kNearlyAsWide * best.width && profile.height > best.profile.height) return true;
    return best.profile.CharacterHeight() < kSmallType && IsOfDisplaySize(candidate) &&
           profile.height < kHugeType * pageHeight;
}

bool LineTournament::StandsOutOnTheLeft(const Contender& candidate, const Contender& best) const {
    return best.profile.CharacterHeight() < kSmallType && IsOfDisplaySize(candidate) &&
           BeginsInLeftThird(candidate);
}

bool LineTournament::ReplacesShortLine(const Contender& candidate, const Contender& best) const {
    if (!IsShort(best, pageWidth) || !BeginsInLeftThird(candidate)) return false;
    const LineProfile& profile = candidate.profile;
    const int offset = OffsetOf(candidate);
    return profile.height > kComparable * best.profile.height ||
           std::abs(profile.leftHeight - best.profile.height) < kLikeHeight ||
           (!profile.IsOfFewComponents() && offset < std::abs(candidate.row - pageHeight) &&
            offset < candidate.row);
}

// The reasons to lose of a candidate that does not stand wholly left of the best line.
bool LineTournament::YieldsTo(const Contender& candidate, const Contender& best) const {
    const LineProfile& p = candidate.profile;
    const LineProfile& b = best.profile;
    const bool isFarther = OffsetOf(candidate) > OffsetOf(best);
    if (candidate.line->left > best.line->right && b.height > kComparable * typicalHeight) return true;
    if (best.line->left <= candidate.line->left && !BeginsInLeftThird(candidate) && isFarther) return true;
    if (p.leftHeight > b.leftHeight + kLikeHeight) return false;
    if (p.leftHeight + kLikeHeight < b.leftHeight) {
        return p.leftHeight + kLowerHeight <= b.leftHeight ||
               p.rightHeight <= b.rightHeight + kMuchHigherHeight ||
               (isFarther && p.rightHeight < b.leftHeight + kLowerHeight);
    }
    if (p.rightHeight <= b.rightHeight + kLikeHeight) {
        return p.rightHeight + kLikeHeight < b.rightHeight || !BeginsInLeftThird(candidate) || isFarther;
    }
    return p.IsOfFewComponents() && candidate.line->left > kRightPart * pageWidth;
}

bool LineTournament::IsOfDisplaySize(const Contender& contender) const {
    return contender.profile.height > kDisplayType * pageHeight;
}

bool LineTournament::BeginsInLeftThird(const Contender& contender) const {
    return contender.line->left < kLeftPart * pageWidth;
}

int LineTournament::OffsetOf(const Contender& contender) const {
    return std::abs(contender.row - midRow);
}

}  // namespace tavrix::lines
