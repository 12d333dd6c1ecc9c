// SPDX-License-Identifier: MIT
#pragma once

#include "operations/Findings.h"
#include "picture/HostImage.h"

namespace host {

// The picture in colour with what was found drawn over it: components red, lines green, blocks blue;
// the true line orange and the logo violet.
HostImage DrawOverlay(HostImage picture, const Findings& findings);

}  // namespace host
