// SPDX-License-Identifier: MIT
#pragma once

#include "components/ComponentGrouper.h"

namespace tavrix {

// Blocks along the direction of the text: component boxes are smeared along it and merged where they
// overlap; each merged box becomes a block with one line of the components whose centres lie in it.
class OrientedBlockGrouper : public ComponentGrouper {
  public:
    using ComponentGrouper::ComponentGrouper;
    // Blocks may end up empty. False, with the blocks made so far in the store, when the store's room runs
    // out or the first block has no line. Throws std::bad_alloc.
    bool Run(ComponentStore& store) override;
};

}  // namespace tavrix
