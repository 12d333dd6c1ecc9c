// SPDX-License-Identifier: MIT
#include "components/ComponentExtractor.h"
#include "image/ImageTool.h"

namespace tavrix {

bool ImageTool::ExtractComponents(ComponentStore* store, std::uint32_t mode, std::int32_t growX,
                                  std::int32_t growY) {
    ComponentExtractor extractor(image);
    switch (static_cast<std::uint16_t>(mode)) {
        case 1: extractor.Run(*store); return true;
        case 2: extractor.RunAndGrow(*store, growX, growY); return true;
        default: return false;
    }
}

}  // namespace tavrix
