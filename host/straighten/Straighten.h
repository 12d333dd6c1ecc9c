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
// stays. remark: what was done, or why not, in plain words.
Picture Straighten(Picture page, const StraightenOptions& options, std::string& remark);

}  // namespace host
