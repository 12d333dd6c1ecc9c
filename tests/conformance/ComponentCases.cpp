// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Cases.h"
#include "GroupingCase.h"

namespace tavrix::conformance {
namespace {

constexpr GroupingOptions kOptions[] = {
    {0, 0, 0}, {TAVRIX_SELECT_ALL_LINES, 0, 1}, {TAVRIX_SELECT_JOIN_PIECES, 0, 0x41}};
constexpr std::uint32_t kMeasureFromLeft = 0x25;

void AddExtraction(Cases& cases, const SheetPointer& sheet, int mode) {
    cases.push_back({"Extract_Eight_Connected_Components mode " + std::to_string(mode) + ", " + sheet->name,
                     [=](Library& library, Outcome& outcome) {
                         const auto extract = TAVRIX_FIND(library, Extract_Eight_Connected_Components);
                         const Picture picture(sheet->Drawn(), 1);
                         HostStore store;
                         outcome.AddNumbers("returned",
                                            {extract(picture.record, &store.header, mode, 2, 0x10000 + 1)});
                         AddStore(outcome, "store", store);
                     }});
}

void AddFilter(Cases& cases, const SheetPointer& sheet, int mode) {
    cases.push_back({"Noise_Filter1 mode " + std::to_string(mode) + ", " + sheet->name,
                     [=](Library& library, Outcome& outcome) {
                         const auto extract = TAVRIX_FIND(library, Extract_Eight_Connected_Components);
                         const auto filter = TAVRIX_FIND(library, Noise_Filter1);
                         const Picture picture(sheet->Drawn(), 1);
                         HostStore store;
                         extract(picture.record, &store.header, 1, 0, 0);
                         outcome.AddNumbers("returned",
                                            {filter(picture.record, &store.header, 2, 2, 0x30000 + mode)});
                         AddStore(outcome, "store", store);
                     }});
}

void AddGrouping(Cases& cases, const SheetPointer& sheet, int mode, int filterMode, std::uint32_t extra) {
    cases.push_back({"Grouping mode " + std::to_string(mode) + " after filter " + std::to_string(filterMode) +
                         ", " + sheet->name,
                     [=](Library& library, Outcome& outcome) {
                         const auto extract = TAVRIX_FIND(library, Extract_Eight_Connected_Components);
                         const auto filter = TAVRIX_FIND(library, Noise_Filter1);
                         const Picture picture(sheet->Drawn(), 1);
                         HostStore store;
                         extract(picture.record, &store.header, 1, 0, 0);
                         filter(picture.record, &store.header, 2, 2, filterMode);
                         AddGroupingOf(outcome, library, picture, store, mode, kOptions[filterMode], extra);
                     }});
}

void AddTrueLine(Cases& cases, const SheetPointer& sheet, const GroupingOptions& options) {
    cases.push_back({"FindTrueLineRect " + std::to_string(options.selectFlags) + " " +
                         std::to_string(options.splitFlags) + ", " + sheet->name,
                     [=](Library& library, Outcome& outcome) {
                         const auto find = TAVRIX_FIND(library, FindTrueLineRect);
                         const Picture picture(sheet->Drawn(), 1);
                         const TrueLineRect rect = find(&picture.record, &options);
                         outcome.AddNumbers("rectangle", {rect.left, rect.top, rect.right, rect.bottom});
                     }});
}

void AddSheet(Cases& cases, const SheetPointer& sheet) {
    for (int mode = 0; mode <= 3; ++mode) AddExtraction(cases, sheet, mode);
    for (int mode = 0; mode <= 2; ++mode) AddFilter(cases, sheet, mode);
    for (const GroupingOptions& options : kOptions) AddTrueLine(cases, sheet, options);
    for (const int mode : {0, 1, 2, 3}) {
        for (int filterMode = 0; filterMode <= 2; ++filterMode) {
            AddGrouping(cases, sheet, mode, filterMode, mode == 3 ? kMeasureFromLeft : 0);
        }
    }
}

SheetPointer TextOf(std::uint32_t seed) {
    return std::make_shared<Sheet>("text " + std::to_string(seed), [=] { return DrawText(seed); });
}

}  // namespace

void AddComponentCases(Cases& cases) {
    for (const SheetPointer& sheet : SmallCards()) AddSheet(cases, sheet);
    AddSheet(cases, FullPage());
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        const SheetPointer sheet = TextOf(seed);
        AddExtraction(cases, sheet, 1 + static_cast<int>(seed % 2));
        AddFilter(cases, sheet, static_cast<int>(seed % 2));
        for (const GroupingOptions& options : kOptions) AddTrueLine(cases, sheet, options);
        for (const int mode : {0, 1}) AddGrouping(cases, sheet, mode, static_cast<int>(seed % 3), 0);
        for (int filterMode = 0; filterMode <= 2; ++filterMode) {
            AddGrouping(cases, sheet, 3, filterMode, seed % 2 != 0 ? kMeasureFromLeft : 0);
        }
    }
}

}  // namespace tavrix::conformance
