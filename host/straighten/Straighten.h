// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "picture/Picture.h"

namespace host {

struct StraightenOptions {
    bool straightens = false;  // turns so that text lines run level and upright
    bool crops = false;        // cuts to the card or sheet, without its perspective
};

// The picture straightened and cropped in one step, bicubic, as far as its content is certain. Its depth
// stays. remark: what was done, or why not, in plain words. The work is done by a module of its own, since
// OpenCV takes longer to load than the command to work on a card: it is loaded with the first call. Throws
// PictureError where it is not there.
Picture Straighten(Picture page, const StraightenOptions& options, std::string& remark);

// The module's one function, by its name.
inline constexpr char kStraightenFunction[] = "TavrixStraighten";
using StraightenFunction = void(Picture& page, const StraightenOptions& options, std::string& remark);

}  // namespace host
