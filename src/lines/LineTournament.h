// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "components/ImageFrame.h"
#include "lines/LineProfile.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// A line in the tournament.
struct Contender {
    ComponentNode* line;
    int width;  // columns
    int row;    // where the line stands, counted as the mid row is
    LineProfile profile;
};

// The rules by which two lines are compared for which is the main line of a card. Heights of type are
// measured by their profiles.
class LineTournament {
  public:
    // typicalHeight: of the store's components, in rows. midRow: where the main line is expected.
    LineTournament(const ImageFrame& page, int typicalHeight, int midRow);

    // Whether a candidate takes the place of the best line so far. The first rule that names a winner
    // decides.
    bool Beats(const Contender& candidate, const Contender& best) const;

  private:
    bool IsBig(const Contender& candidate, const Contender& best) const;
    bool Fits(const Contender& candidate, const Contender& best) const;
    bool StandsOutOnTheLeft(const Contender& candidate, const Contender& best) const;
    bool ReplacesShortLine(const Contender& candidate, const Contender& best) const;
    bool YieldsTo(const Contender& candidate, const Contender& best) const;

    bool IsOfDisplaySize(const Contender& contender) const;
    bool BeginsInLeftThird(const Contender& contender) const;
    int OffsetOf(const Contender& contender) const;

    const int pageWidth;
    const int pageHeight;
    const int typicalHeight;
    const int midRow;
};

}  // namespace tavrix::lines
