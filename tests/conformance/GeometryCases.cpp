// SPDX-License-Identifier: MIT
#include <cstring>

#include "Cases.h"
#include "Pages.h"

namespace tavrix::conformance {
namespace {

void AddQuarterTurn(Cases& cases, const SheetPointer& sheet, int bitCount, int angle) {
    cases.push_back({"RotateGrayImage by " + std::to_string(angle) + ", " + NameOf(*sheet, bitCount),
                     [=](Library& library, Outcome& outcome) {
                         const auto rotate = TAVRIX_FIND(library, RotateGrayImage);
                         AddImageCall(outcome, sheet->Drawn(), bitCount,
                                      [&](Picture& picture, DibRecord& result) {
                                          return rotate(picture.handle, angle, &result);
                                      });
                     }});
}

std::string TurnOf(double angle, bool clockwise, const std::string& what) {
    return " by " + std::to_string(angle) + (clockwise ? " clockwise, " : ", ") + what;
}

void AddTurn(Cases& cases, const SheetPointer& sheet, int bitCount, double angle, bool clockwise) {
    cases.push_back({"RotateImageFree" + TurnOf(angle, clockwise, NameOf(*sheet, bitCount)),
                     [=](Library& library, Outcome& outcome) {
                         const auto rotate = TAVRIX_FIND(library, RotateImageFree);
                         AddImageCall(outcome, sheet->Drawn(), bitCount,
                                      [&](Picture& picture, DibRecord& result) {
                                          return rotate(picture.handle, angle, clockwise, &result);
                                      });
                     }});
}

void AddTurnWithCopy(Cases& cases, const SheetPointer& sheet, int bitCount, double angle, bool clockwise) {
    const std::string name = "RotateFree" + TurnOf(angle, clockwise, NameOf(*sheet, bitCount));
    cases.push_back(
        {name, [=](Library& library, Outcome& outcome) {
             const auto rotate = TAVRIX_FIND(library, RotateFree);
             AddImageCall(outcome, sheet->Drawn(), bitCount, [&](Picture& picture, DibRecord& result) {
                 const HGLOBAL copy = rotate(picture.handle, angle, clockwise, &result);
                 if (copy == nullptr) return 0;
                 Require(GlobalHandle(result.header) != copy && LocksOf(copy) == 1 &&
                             std::memcmp(GlobalLock(copy), result.header, GlobalSize(copy)) == 0,
                         name + ": a second copy");
                 GlobalFree(copy);
                 return 1;
             });
         }});
}

void AddBlockTurn(Cases& cases, const SheetPointer& sheet, const BlockRect& block, int code) {
    cases.push_back({"RotateImageBlock " + std::to_string(block.left) + ".." + std::to_string(block.right) +
                         ", " + std::to_string(block.bottom) + ".." + std::to_string(block.top) + " code " +
                         std::to_string(code) + ", " + sheet->name,
                     [=](Library& library, Outcome& outcome) {
                         const auto rotate = TAVRIX_FIND(library, RotateImageBlock);
                         AddImageCall(outcome, sheet->Drawn(), 1, [&](Picture& picture, DibRecord& result) {
                             return rotate(picture.record, block, code, &result);
                         });
                     }});
}

void AddBorders(Cases& cases, const SheetPointer& sheet, int bitCount) {
    cases.push_back(
        {"RemoveImageBorder, " + NameOf(*sheet, bitCount), [=](Library& library, Outcome& outcome) {
             const auto remove = TAVRIX_FIND(library, RemoveImageBorder);
             AddImageCall(outcome, sheet->Drawn(), bitCount, [&](Picture& picture, DibRecord& result) {
                 return remove(picture.handle, &result);
             });
         }});
    cases.push_back(
        {"CopyImgWithWhiteSurr, " + NameOf(*sheet, bitCount), [=](Library& library, Outcome& outcome) {
             const auto surround = TAVRIX_FIND(library, CopyImgWithWhiteSurr);
             std::int32_t steps = -7;
             AddImageCall(outcome, sheet->Drawn(), bitCount, [&](Picture& picture, DibRecord&) {
                 const int returned = surround(&picture.record, &steps);
                 picture.handle = GlobalHandle(picture.record.header);  // the old block is gone
                 return returned;
             });
             outcome.AddNumbers("steps", {steps});
         }});
}

}  // namespace

void AddGeometryCases(Cases& cases) {
    ForEachSmallCard([&](const SheetPointer& sheet, int bitCount) {
        for (const int angle : {90, 0x10000 + 90, 180}) AddQuarterTurn(cases, sheet, bitCount, angle);
        for (const double angle : {0.0, 0.5, 7.25, 30.0, 45.0, 89.9, 90.0, -12.375, 200.0}) {
            for (const bool clockwise : {false, true}) AddTurn(cases, sheet, bitCount, angle, clockwise);
        }
        for (const double angle : {0.0, 7.25, 90.0}) AddTurnWithCopy(cases, sheet, bitCount, angle, true);
        AddBorders(cases, sheet, bitCount);
    });
    for (const SheetPointer& sheet : SmallCards()) {
        const auto w = static_cast<std::int16_t>(sheet->Drawn().width);
        const auto h = static_cast<std::int16_t>(sheet->Drawn().height);
        const auto last = [](int size, int part, int of) {
            return static_cast<std::int16_t>(size * part / of - 1);
        };
        const BlockRect blocks[] = {{0, last(h, 1, 1), last(w, 1, 1), 0, 7},
                                    {static_cast<std::int16_t>(w / 5), last(h, 4, 5), last(w, 6, 7),
                                     static_cast<std::int16_t>(h / 4), 0},
                                    {-3, h, w, -2, 0},
                                    {5, 2, 3, 0, 0},
                                    {1, 0, 3, 4, 0}};
        for (const BlockRect& block : blocks) {
            for (int code = 0; code <= 6; ++code) AddBlockTurn(cases, sheet, block, code);
        }
    }
    AddQuarterTurn(cases, FullPage(), 8, 90);
    AddTurn(cases, FullPage(), 8, 3.5, false);
    for (const int code : {1, 4}) AddBlockTurn(cases, FullPage(), {11, 1490, 1370, 5, 0}, code);
    AddBorders(cases, FullPage(), 1);
}

}  // namespace tavrix::conformance
