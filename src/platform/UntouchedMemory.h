// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace tavrix::platform {

// Zeroed memory straight from the system, which costs nothing before it is touched; given back when the
// object goes. For large blocks of which little is used as a rule: the C library clears what it has had
// before.
class UntouchedMemory {
  public:
    explicit UntouchedMemory(std::size_t bytes);
    ~UntouchedMemory();
    UntouchedMemory(const UntouchedMemory&) = delete;
    UntouchedMemory& operator=(const UntouchedMemory&) = delete;

    void* Start() const { return start; }  // null when memory ran out

  private:
    void* start;
    std::size_t size;
};

}  // namespace tavrix::platform
