// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace host {

// Writes a file that appears whole or not at all, also when the process or the system ends meanwhile.
// Folders on the way are made; a file that was there keeps its mode and owner. "-" is standard output;
// devices and pipes are written directly. Throws PictureError of kind kUnwritable.
// source: the input that the file is made from, which SourceOf tells later; empty for none.
void WriteWhole(const std::string& path, std::span<const std::uint8_t> bytes, const std::string& source = "");

// The input that a file was made from, as an absolute path; empty where nothing tells. It is kept in an
// extended attribute, relative to the file's folder.
std::string SourceOf(const std::string& path);

// Standard output, flushed; throws like WriteWhole.
void WriteStandardOutput(std::span<const std::uint8_t> bytes);

}  // namespace host
