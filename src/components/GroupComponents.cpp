// SPDX-License-Identifier: MIT
#include <memory>

#include "components/AlignedBlockGrouper.h"
#include "components/OrientedBlockGrouper.h"
#include "image/ImageTool.h"
#include "lines/TextLineGrouper.h"

namespace tavrix {

bool ImageTool::GroupComponents(ComponentStore* store, std::uint32_t mode) {
    std::unique_ptr<ComponentGrouper> grouper;
    switch (mode) {
        case 0: grouper = std::make_unique<OrientedBlockGrouper>(image); break;
        case 1: grouper = std::make_unique<AlignedBlockGrouper>(image); break;
        case 3: grouper = std::make_unique<TextLineGrouper>(image, groupingOptions, groupingValue); break;
        default: return false;
    }
    return grouper->Run(*store);
}

}  // namespace tavrix
