// SPDX-License-Identifier: MIT
#include <memory>

#include "components/ComponentNoiseFilter.h"
#include "image/ImageTool.h"

namespace tavrix {

bool ImageTool::FilterNoise(ComponentStore* store, std::uint32_t maxW, std::uint32_t maxH,
                            std::uint32_t mode) {
    const auto filter = std::make_unique<ComponentNoiseFilter>(image);
    if (mode == 0)
        filter->FilterBySize(*store, static_cast<std::uint16_t>(maxW), static_cast<std::uint16_t>(maxH));
    if (mode == 1) filter->FilterLineNoise(*store);
    return true;
}

}  // namespace tavrix
