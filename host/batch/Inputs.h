// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace host {

// A command line that cannot be carried out; nothing has been done.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Input {
    std::string path;              // a file, or "-"
    std::filesystem::path folder;  // below the folder that was searched, or --keep-tree's; empty otherwise
    std::string problem;           // why it is no input, found before any work; empty otherwise

    // The name without folder and extension; "stdin" for standard input.
    std::string Stem() const;
    std::string Extension() const;  // without the dot
};

// How the inputs of a command are named.
struct InputOptions {
    std::vector<std::string> names;
    std::string list;                // a file with one name a line, "-" for standard input, empty for none
    bool endsNamesWithNull = false;  // in the list, instead of line ends
    bool isRecursive = false;
    std::string treeRoot;  // inputs keep their folders below this one; empty: as -r keeps them
};

// The files to work on, in the order given, and how many files in the folders were left out.
struct InputList : std::vector<Input> {
    std::size_t notPictures = 0;
    std::size_t earlierOutputs = 0;
};

// Folders are searched for pictures when isRecursive (by content, or by an extension that promises one;
// sorted); otherwise they stay in the list, to be refused like any other unreadable file. Files that were
// made from another one of the inputs are left out. Throws PictureError, UsageError.
InputList CollectInputs(const InputOptions& options);

}  // namespace host
