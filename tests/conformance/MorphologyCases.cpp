// SPDX-License-Identifier: MIT
#include "Cases.h"
#include "Pages.h"

namespace tavrix::conformance {
namespace {

void AddOperation(Cases& cases, const SheetPointer& sheet, int bitCount, int operation, bool byRecord) {
    cases.push_back(
        {"Morphology " + std::to_string(operation) + (byRecord ? " by record, " : ", ") +
             NameOf(*sheet, bitCount),
         [=](Library& library, Outcome& outcome) {
             const auto run = TAVRIX_FIND(library, Morphology);
             AddImageCall(outcome, sheet->Drawn(), bitCount, [&](Picture& picture, DibRecord& result) {
                 if (byRecord) result = picture.record;
                 const int returned = run(byRecord ? nullptr : picture.handle, &result, operation);
                 if (result.header == picture.record.header) result = {};  // worked on in place
                 return returned;
             });
         }});
}

}  // namespace

void AddMorphologyCases(Cases& cases) {
    ForEachSmallCard([&](const SheetPointer& sheet, int bitCount) {
        for (int operation = 0; operation <= 6; ++operation) {
            for (const bool byRecord : {false, true})
                AddOperation(cases, sheet, bitCount, operation, byRecord);
        }
    });
    for (const int operation : {1, 2, 5}) AddOperation(cases, FullPage(), 1, operation, false);
    for (const int operation : {0, 3, 4}) AddOperation(cases, FullPage(), 8, operation, false);
}

}  // namespace tavrix::conformance
