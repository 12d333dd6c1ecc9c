// SPDX-License-Identifier: MIT
#pragma once

#include "components/ComponentStore.h"

namespace tavrix {

// A store of the library's own that lasts for one call.
class PrivateStore : public ComponentStore {
  public:
    PrivateStore() : ComponentStore{}, isReady(store::Create(*this)) {}
    ~PrivateStore() { store::Release(*this); }
    PrivateStore(const PrivateStore&) = delete;
    PrivateStore& operator=(const PrivateStore&) = delete;

    // False when memory ran out: the store is empty and takes no node.
    bool IsReady() const { return isReady; }

  private:
    bool isReady;
};

}  // namespace tavrix
