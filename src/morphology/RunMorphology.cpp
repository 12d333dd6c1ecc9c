// SPDX-License-Identifier: MIT
#include "image/DibImage.h"
#include "image/ImageTool.h"
#include "morphology/MorphologyFilter.h"

namespace tavrix {

bool ImageTool::RunMorphology(std::uint32_t operation) {
    constexpr float kSharpening = 10.0f;
    MorphologyFilter filter(image);
    switch (operation) {
        case 0: filter.EdgeMap(); break;
        case 1: filter.Opening(); break;
        case 2: filter.Closing(); break;
        case 3: filter.Smooth3x3(); break;
        case 4: filter.Sharpen(kSharpening); break;
        case 5: filter.Dilate(); break;
        default: break;
    }
    return true;
}

}  // namespace tavrix
