// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace host {

// Writes a file that appears whole or not at all: under a temporary name beside it, then renamed.
// Folders on the way are made. "-" is standard output; devices and pipes are written directly.
// Throws PictureError of kind kUnwritable.
void WriteWhole(const std::string& path, std::span<const std::uint8_t> bytes);

// Standard output, flushed; throws like WriteWhole.
void WriteStandardOutput(std::span<const std::uint8_t> bytes);

}  // namespace host
