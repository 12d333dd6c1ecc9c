// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Cases.h"
#include "HostStore.h"

namespace tavrix::conformance {

// A white page.
SheetPointer BlankSheet(int width, int height);

void AddStore(Outcome& outcome, const std::string& name, const HostStore& store);

// Groups, and looks for the logo in what comes out.
void AddGroupingOf(Outcome& outcome, Library& library, const Picture& picture, HostStore& store, int mode,
                   const GroupingOptions& options, std::uint32_t extra);

// A case that groups a store of the host's own making.
void AddStoreGrouping(Cases& cases, const std::string& name, const SheetPointer& page,
                      std::function<void(HostStore&)> fill, int mode, const GroupingOptions& options,
                      std::uint32_t extra);

}  // namespace tavrix::conformance
