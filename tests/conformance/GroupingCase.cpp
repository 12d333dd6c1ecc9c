// SPDX-License-Identifier: MIT
#include "GroupingCase.h"

#include <utility>

namespace tavrix::conformance {

SheetPointer BlankSheet(int width, int height) {
    return std::make_shared<Sheet>("blank " + std::to_string(width) + "x" + std::to_string(height),
                                   [=] { return Page(width, height); });
}

void AddStore(Outcome& outcome, const std::string& name, const HostStore& store) {
    outcome.Add(name, std::make_unique<StorePart>(store.header));
}

void AddGroupingOf(Outcome& outcome, Library& library, const Picture& picture, HostStore& store, int mode,
                   const GroupingOptions& options, std::uint32_t extra) {
    const auto group = TAVRIX_FIND(library, Grouping);
    const auto findLogo = TAVRIX_FIND(library, FindCardLogo);
    outcome.AddNumbers("returned", {group(picture.record, &store.header, &options, mode, extra, 12345)});
    AddStore(outcome, "store", store);
    const LogoRect logo = findLogo(picture.record, store.header);
    outcome.AddNumbers("logo", {logo.left, logo.top, logo.right, logo.bottom, logo.reserved});
}

void AddStoreGrouping(Cases& cases, const std::string& name, const SheetPointer& page,
                      std::function<void(HostStore&)> fill, int mode, const GroupingOptions& options,
                      std::uint32_t extra) {
    cases.push_back({"Grouping mode " + std::to_string(mode) + " of a store, " + name + ", " + page->name,
                     [=, fill = std::move(fill)](Library& library, Outcome& outcome) {
                         const Picture picture(page->Drawn(), 1);
                         HostStore store;
                         fill(store);
                         AddGroupingOf(outcome, library, picture, store, mode, options, extra);
                     }});
}

}  // namespace tavrix::conformance
