// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Library.h"
#include "Outcome.h"
#include "Page.h"
#include "Pages.h"

namespace tavrix::conformance {

// One call, or a few that belong together, with everything that it is given.
struct Case {
    std::string name;
    std::function<void(Library&, Outcome&)> run;
};
using Cases = std::vector<Case>;

void AddBinarizeCases(Cases& cases);
void AddComponentCases(Cases& cases);
void AddLineCases(Cases& cases);
void AddStoreCases(Cases& cases);
void AddGeometryCases(Cases& cases);
void AddMorphologyCases(Cases& cases);

// "card 403x241, 8 bit"
std::string NameOf(const Sheet& sheet, int bitCount);

// Calls visit(sheet, bitCount) for small cards of all kinds of sizes at every depth.
template <class Visit>
void ForEachSmallCard(Visit visit) {
    for (const SheetPointer& sheet : SmallCards()) {
        for (const int bitCount : {1, 8, 24}) visit(sheet, bitCount);
    }
}

// Adds what the host sees after a call on a picture, with the diagnostic file if one was written. Frees the
// result.
void AddSeen(Outcome& outcome, const DibRecord& picture, std::unique_ptr<const ImagePart> before,
             const DibRecord& result);

// Runs call(picture, result) and adds what it returned and what the host sees.
template <class Call>
void AddImageCall(Outcome& outcome, const Page& page, int bitCount, Call call) {
    Picture picture(page, bitCount);
    auto before = std::make_unique<const ImagePart>(picture.record);
    DibRecord result{};
    outcome.AddNumbers("returned", {call(picture, result)});
    AddSeen(outcome, picture.record, std::move(before), result);
}

}  // namespace tavrix::conformance
