// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace tavrix::conformance {

// FNV-1a of 32 bits.
class Digest {
  public:
    Digest& Bytes(const void* data, std::size_t count) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        for (std::size_t i = 0; i < count; ++i) value = (value ^ bytes[i]) * 0x01000193u;
        return *this;
    }
    Digest& Add(std::int64_t number) { return Bytes(&number, sizeof number); }

    std::string Long() const { return Hex("%08x", value); }
    std::string Short() const { return Hex("%04x", (value >> 16 ^ value) & 0xFFFF); }

  private:
    static std::string Hex(const char* format, std::uint32_t number) {
        char text[9];
        std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
        return text;
    }
    std::uint32_t value = 0x811C9DC5u;
};

}  // namespace tavrix::conformance
