// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <mutex>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "batch/Inputs.h"

namespace host {

// Which files a run may write: no input, none twice, and read-only ones only by force.
class OutputClaims {
  public:
    OutputClaims(const std::vector<Input>& inputs, bool isForced);
    bool IsInput(const std::string& path) const;
    // Safe to use from several threads; throws PictureError.
    void Claim(const std::string& path);

  private:
    std::set<std::pair<dev_t, ino_t>> inputFiles;
    bool isForced;
    std::set<std::string> claimed;
    std::mutex mutex;
};

// Where the results of one option go: a file, a folder with a pattern for the names in it, or "-".
// In names, {stem} is the input's name without folder and extension, {ext} its extension, {dir} its folder
// and {page} the page's number from 1 on.
class OutputNames {
  public:
    // place: the option's value, empty when it was not given. pattern: names inside a folder.
    OutputNames(std::string option, std::string place, std::string pattern);

    bool IsWanted() const { return !place.empty(); }
    bool IsStandardOutput() const { return place == "-"; }
    // Every page becomes a file of its own.
    bool IsByPage() const { return name.find("{page}") != std::string::npos; }
    std::string NameOf(const Input& input, std::size_t page) const;
    // Whether the output is there and was made from this input: newer than it, and as far as can be told of
    // its name. Throws PictureError when it was made from another one.
    bool IsDone(const Input& input, std::size_t page) const;

    // Throws UsageError when there is no folder for the outputs, when those of several inputs would fall
    // on one name, or when one is an input.
    void Check(std::span<const Input> inputs, const OutputClaims& claims) const;

  private:
    void CheckFolder() const;

    std::string option;
    std::string place;
    std::string name;  // pattern of the last part, or of the whole path when isFolder is false
    bool isFolder = false;
};

}  // namespace host
