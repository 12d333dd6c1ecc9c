// SPDX-License-Identifier: MIT
#pragma once

#include "components/ComponentGrouper.h"

namespace tavrix {

// Blocks of components close to each other: boxes are smeared towards the right and higher rows and merged
// where they overlap; each merged box becomes a block with one line of the components whose centres lie in
// it. Then blocks are joined that are aligned above or beside each other, or that touch.
class AlignedBlockGrouper : public ComponentGrouper {
  public:
    using ComponentGrouper::ComponentGrouper;
    // False, with the blocks made so far in the store, when the store's room runs out or the first block
    // has no line. Throws std::bad_alloc.
    bool Run(ComponentStore& store) override;
};

}  // namespace tavrix
