// SPDX-License-Identifier: MIT
#pragma once

#include "Findings.h"
#include "HostImage.h"

namespace tavrix::host {

// The picture in colour with what was found drawn over it: components red, lines green, blocks blue;
// the true line orange and the logo violet.
HostImage DrawOverlay(const HostImage& image, const Findings& findings);

}  // namespace tavrix::host
