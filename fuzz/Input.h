// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace tavrix::fuzz {

// The bytes of one input, taken from the front. Past the end there are zeros.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : rest(data, size) {}

    template <class Number>
    Number Take() {
        Number value{};
        const std::size_t bytes = std::min(sizeof value, rest.size());
        std::memcpy(&value, rest.data(), bytes);
        rest = rest.subspan(bytes);
        return value;
    }
    int Byte() { return Take<std::uint8_t>(); }
    // 0 to count - 1.
    int Below(int count) { return Byte() % count; }
    bool IsEmpty() const { return rest.empty(); }
    // What is left, over and over.
    void Fill(std::uint8_t* target, std::size_t bytes) const {
        for (std::size_t i = 0; i < bytes; ++i) target[i] = rest.empty() ? 0 : rest[i % rest.size()];
    }

  private:
    std::span<const std::uint8_t> rest;
};

}  // namespace tavrix::fuzz
