// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct Input {
    std::string path;              // a file, or "-"
    std::filesystem::path folder;  // below the folder that was searched; empty otherwise

    // The name without folder and extension; "stdin" for standard input.
    std::string Stem() const;
    std::string Extension() const;  // without the dot
};

// The files to work on, in the order given. Folders are searched for pictures (by extension, sorted)
// when isRecursive; otherwise they stay in the list, to be refused like any other unreadable file.
// listPath: a file with one name a line, "-" for standard input, empty for none. Throws PictureError.
std::vector<Input> CollectInputs(const std::vector<std::string>& names, const std::string& listPath,
                                 bool isRecursive);

}  // namespace host
