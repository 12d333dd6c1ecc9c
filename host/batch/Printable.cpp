// SPDX-License-Identifier: MIT
#include "batch/Printable.h"

#include <cstdint>
#include <cstdio>

namespace host {
namespace {

// Bytes of the well-formed UTF-8 character at the place; 0 where there is none.
std::size_t CharacterBytes(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) -> unsigned {
        return at + i < text.size() ? static_cast<std::uint8_t>(text[at + i]) : 0;
    };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t count = first >= 0xC2 && first < 0xE0   ? 2
                              : first >= 0xE0 && first < 0xF0 ? 3
                              : first >= 0xF0 && first < 0xF5 ? 4
                                                              : 0;
    for (std::size_t i = 1; i < count; ++i) {
        if (byte(i) >> 6 != 2) return 0;
    }
    // Longer forms than needed, halves of pairs, and beyond the last character.
    const unsigned second = byte(1);
    const bool isOdd = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                       (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return isOdd ? 0 : count;
}

}  // namespace

std::string Printable(const std::string& text) {
    std::string printable;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t count = CharacterBytes(text, at);
        const auto first = static_cast<std::uint8_t>(text[at]);
        const bool isControl = first < 0x20 || first == 0x7F ||
                               (first == 0xC2 && static_cast<std::uint8_t>(text[at + 1]) < 0xA0);
        if (count != 0 && !isControl) {
            printable.append(text, at, count);
            at += count;
        } else if (first == '\n' || first == '\t') {
            printable += first == '\n' ? "\\n" : "\\t";
            ++at;
        } else {
            char code[5];
            std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(first));
            printable += code;
            ++at;
        }
    }
    return printable;
}

}  // namespace host
