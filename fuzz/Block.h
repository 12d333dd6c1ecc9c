// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "Input.h"
#include "tavrix/tavrix.h"

namespace tavrix::fuzz {

// Ends the program, which the fuzzer reports with the input.
void Require(bool holds, const char* what);

// A host's image in a movable block of global memory, locked once.
class Block {
  public:
    // Size from the input, at most maxSide on each side, pixels too; bitCount 1, 8 or 24.
    Block(Input& input, int bitCount, int maxSide);
    // Takes over a result; requires that its header and its block agree.
    explicit Block(const DibRecord& result);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    HGLOBAL Handle() const { return handle; }
    const DibRecord& Record() const { return record; }
    std::vector<std::uint8_t> Bytes() const;

  private:
    HGLOBAL handle = nullptr;
    DibRecord record{};
};

// 1, 8 or 24.
int TakeDepth(Input& input);

// Requires a result that is in order, or one that was not written, and frees it.
void TakeBack(const DibRecord& result);

}  // namespace tavrix::fuzz
