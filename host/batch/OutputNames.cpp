// SPDX-License-Identifier: MIT
#include "batch/OutputNames.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

#include "picture/Picture.h"

namespace fs = std::filesystem;

namespace host {
namespace {

void Replace(std::string& text, std::string_view field, const std::string& value) {
    for (std::size_t at = 0; (at = text.find(field, at)) != std::string::npos; at += value.size()) {
        text.replace(at, field.size(), value);
    }
}

void CheckFields(const std::string& pattern, const std::string& option) {
    std::string rest = pattern;
    for (const char* field : {"{stem}", "{ext}", "{page}"}) Replace(rest, field, "");
    if (rest.find_first_of("{}") != std::string::npos) {
        throw UsageError(option + ": " + pattern + ": names may contain {stem}, {ext} and {page}");
    }
}

}  // namespace

OutputClaims::OutputClaims(const std::vector<Input>& inputs) {
    for (const Input& input : inputs) {
        struct stat facts = {};
        if (input.path != "-" && stat(input.path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode)) {
            inputFiles.emplace(facts.st_dev, facts.st_ino);
        }
    }
}

bool OutputClaims::IsInput(const std::string& path) const {
    struct stat facts = {};
    return stat(path.c_str(), &facts) == 0 && inputFiles.contains({facts.st_dev, facts.st_ino});
}

void OutputClaims::Claim(const std::string& path) {
    struct stat facts = {};
    const bool isDevice = path == "-" || (stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode));
    if (isDevice) return;
    if (IsInput(path)) FailWriting("cannot write " + path + ": it is an input as well");
    const std::lock_guard lock(mutex);
    if (!claimed.insert(fs::path(path).lexically_normal().string()).second) {
        FailWriting("cannot write " + path + ": it has been written in this run");
    }
}

OutputNames::OutputNames(std::string optionName, std::string placeGiven, std::string pattern)
    : option(std::move(optionName)), place(std::move(placeGiven)) {
    std::error_code error;
    isFolder = !place.empty() && place != "-" && (place.back() == '/' || fs::is_directory(place, error));
    name = isFolder ? std::move(pattern) : place;
    CheckFields(name, option);
}

std::string OutputNames::NameOf(const Input& input, std::size_t page) const {
    std::string text = name;
    Replace(text, "{page}", std::to_string(page));
    Replace(text, "{ext}", input.Extension());
    Replace(text, "{stem}", input.Stem());
    return isFolder ? (fs::path(place) / input.folder / text).lexically_normal().string() : text;
}

void OutputNames::CheckFolder() const {
    std::error_code error;
    const fs::file_status status = fs::status(place, error);
    if (place == "-" || (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status)))
        return;
    const std::string fixed = place.substr(0, place.find('{'));  // fields may name folders to be made
    fs::path folder = isFolder ? fs::path(place) : fs::path(fixed).parent_path();
    if (!isFolder && !folder.empty() && !fs::exists(folder, error)) {
        throw UsageError(option + " " + place + ": there is no folder " + folder.string() +
                         ": make it, or correct the name");
    }
    // A new folder is made in the nearest one that is there.
    while (!folder.empty() && !fs::exists(folder, error)) folder = folder.parent_path();
    if (folder.empty()) folder = ".";
    if (!fs::is_directory(folder, error)) {
        throw UsageError(option + " " + place + ": " + folder.string() + " is not a folder");
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        throw UsageError(option + " " + place + ": cannot write in the folder " + folder.string() + ": " +
                         std::strerror(errno));
    }
}

void OutputNames::Check(const std::vector<Input>& inputs, const OutputClaims& claims) const {
    if (!IsWanted()) return;
    if (IsStandardOutput() && inputs.size() > 1) {
        throw UsageError(option + " -: standard output takes one picture, not " +
                         std::to_string(inputs.size()));
    }
    CheckFolder();
    std::map<std::string, const Input*> owners;
    for (const Input& input : inputs) {
        const std::string output = NameOf(input, 1);
        const auto [owner, isNew] = owners.emplace(fs::path(output).lexically_normal().string(), &input);
        if (!isNew) {
            throw UsageError(option + ": " + output + " would be written for both " + owner->second->path +
                             " and " + input.path);
        }
    }
    for (const auto& [output, owner] : owners) {
        if (claims.IsInput(output)) throw UsageError(option + ": " + output + " is an input as well");
    }
}

}  // namespace host
