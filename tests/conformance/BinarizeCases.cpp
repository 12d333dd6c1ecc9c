// SPDX-License-Identifier: MIT
#include "Cases.h"
#include "Pages.h"

namespace tavrix::conformance {
namespace {

void AddBinarized(Cases& cases, const SheetPointer& sheet, int bitCount, int mode) {
    cases.push_back({"Binarized mode " + std::to_string(mode) + ", " + NameOf(*sheet, bitCount),
                     [=](Library& library, Outcome& outcome) {
                         const auto binarize = TAVRIX_FIND(library, Binarized);
                         AddImageCall(outcome, sheet->Drawn(), bitCount,
                                      [&](Picture& picture, DibRecord& result) {
                                          return binarize(picture.handle, &result, mode);
                                      });
                     }});
}

void AddBlock(Cases& cases, const SheetPointer& sheet, int bitCount, int mode) {
    cases.push_back(
        {"Binarized_Separate_Block mode " + std::to_string(mode) + ", " + NameOf(*sheet, bitCount),
         [=](Library& library, Outcome& outcome) {
             const auto binarize = TAVRIX_FIND(library, Binarized_Separate_Block);
             AddImageCall(outcome, sheet->Drawn(), bitCount, [&](Picture& picture, DibRecord& result) {
                 return binarize(picture.handle, &result, mode);
             });
         }});
}

}  // namespace

void AddBinarizeCases(Cases& cases) {
    ForEachSmallCard([&](const SheetPointer& sheet, int bitCount) {
        for (const int mode : {0, 1, 2, 3, 4, 5, 6, 8, 9}) {
            AddBinarized(cases, sheet, bitCount, mode);
            if (mode != 9 && bitCount != 24) AddBlock(cases, sheet, bitCount, mode);
        }
    });
    // Modes that there are not show a message.
    const SheetPointer& card = SmallCards().back();
    for (const int bitCount : {1, 8, 24}) AddBinarized(cases, card, bitCount, 7);
    AddBinarized(cases, card, 8, -1);
    AddBlock(cases, card, 8, 9);
    AddBlock(cases, card, 24, 5);
    for (const std::vector<SheetPointer>* sheets : {&VariedPages(), &RarePages()}) {
        for (const SheetPointer& sheet : *sheets) {
            for (const int mode : {5, 8, 9}) AddBinarized(cases, sheet, 8, mode);
            for (const int mode : {5, 8}) AddBlock(cases, sheet, 8, mode);
        }
    }
    for (std::size_t i = 0; i < VariedPages().size(); i += 4) {
        for (const int mode : {0, 1, 2, 3, 4, 6}) AddBinarized(cases, VariedPages()[i], 8, mode);
    }
    for (const int mode : {0, 1, 2, 3, 4, 5, 6, 8, 9}) AddBinarized(cases, FullPage(), 8, mode);
    for (const int mode : {3, 5}) AddBinarized(cases, FullPage(), 24, mode);
}

}  // namespace tavrix::conformance
