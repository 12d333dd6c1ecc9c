// SPDX-License-Identifier: MIT
#pragma once

#include "picture/HostImage.h"

namespace host {

struct DespeckleOptions {
    int width = 0;  // components of at most this width and height go
    int height = 0;
    bool keepsLarge = false;  // the thin rules and large frames stay that Noise_Filter1 takes for noise, too
};

// A 1-bit picture without the components that Noise_Filter1 deletes by their size.
HostImage Despeckle(HostImage image, const DespeckleOptions& options);

}  // namespace host
