// SPDX-License-Identifier: MIT
#pragma once

#include "components/ComponentStore.h"
#include "platform/UntouchedMemory.h"

namespace tavrix {

// A store of the library's own that lasts for one call. Slots that no component has taken cost nothing.
class PrivateStore : public ComponentStore {
  public:
    PrivateStore() : ComponentStore{}, memory(store::kBytes) {
        if (memory.Start() != nullptr) store::Lay(*this, static_cast<ComponentNode*>(memory.Start()));
    }
    PrivateStore(const PrivateStore&) = delete;
    PrivateStore& operator=(const PrivateStore&) = delete;

    // False when memory ran out: the store is empty and takes no node.
    bool IsReady() const { return nodes != nullptr; }

  private:
    platform::UntouchedMemory memory;
};

}  // namespace tavrix
