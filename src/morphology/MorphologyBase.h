// SPDX-License-Identifier: MIT
#pragma once

namespace tavrix {

class MorphologyBase {
  public:
    virtual ~MorphologyBase() = default;
    virtual void EdgeMap() = 0;
};

}  // namespace tavrix
