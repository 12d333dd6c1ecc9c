// SPDX-License-Identifier: MIT
#include "batch/OutputNames.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "batch/OutputFile.h"
#include "picture/Picture.h"

namespace fs = std::filesystem;

namespace host {
namespace {

// The pattern with its fields replaced: valueOf gives the value of one, or nothing for an unknown name.
template <typename ValueOf>
std::optional<std::string> Filled(std::string_view pattern, const ValueOf& valueOf) {
    std::string text;
    while (!pattern.empty()) {
        const std::size_t open = pattern.find_first_of("{}");
        text += pattern.substr(0, open);
        if (open == std::string_view::npos) break;
        const std::size_t close = pattern.find('}', open);
        if (close == std::string_view::npos) return std::nullopt;
        const std::optional<std::string> value = valueOf(pattern.substr(open + 1, close - open - 1));
        if (!value) return std::nullopt;
        text += *value;
        pattern.remove_prefix(close + 1);
    }
    return text;
}

void CheckFields(const std::string& pattern, const std::string& option) {
    const auto known = [](std::string_view field) {
        const bool isKnown = field == "stem" || field == "ext" || field == "page" || field == "dir";
        return isKnown ? std::optional<std::string>("") : std::nullopt;
    };
    if (!Filled(pattern, known)) {
        throw UsageError(option + ": " + pattern + ": names may contain {stem}, {ext}, {dir} and {page}");
    }
}

// The folder of an input as {dir} puts it into names.
std::string FolderName(const Input& input) {
    if (!input.folder.empty()) return input.folder.string();
    const fs::path folder = fs::path(input.path).parent_path().relative_path().lexically_normal();
    if (!folder.empty() && *folder.begin() == "..") {
        throw UsageError("{dir}: the folder of " + input.path +
                         " leads upwards: --keep-tree FOLDER tells where the tree begins");
    }
    return folder.empty() ? "." : folder.string();
}

// What keeps the outputs of two inputs apart.
std::string Remedy(const Input& a, const Input& b) {
    const fs::path one = a.path, two = b.path;
    if (one.lexically_normal() == two.lexically_normal()) return "name it once";
    if (one.filename() == two.filename()) return "--keep-tree FOLDER keeps the folders of the inputs";
    return "names with {ext} or {dir} keep them apart (--name '{stem}-{ext}.tif')";
}

}  // namespace

OutputClaims::OutputClaims(const std::vector<Input>& inputs, bool mayReplace) : isForced(mayReplace) {
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
    const bool isReadOnly =
        facts.st_ino != 0 && ((facts.st_mode & 0222) == 0 || access(path.c_str(), W_OK) != 0);
    if (isReadOnly && !isForced)
        FailWriting("cannot write " + path + ": it is read-only (--force replaces it)");
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
    bool hasFolder = false;
    const auto valueOf = [&](std::string_view field) -> std::optional<std::string> {
        if (field == "page") return std::to_string(page);
        if (field == "ext") return input.Extension();
        if (field == "stem") return input.Stem();
        hasFolder = true;
        return FolderName(input);
    };
    std::string text = *Filled(name, valueOf);
    if (!isFolder) return text;
    return (fs::path(place) / (hasFolder ? fs::path() : input.folder) / text).lexically_normal().string();
}

bool OutputNames::IsDone(const Input& input, std::size_t page) const {
    const std::string path = NameOf(input, page);
    struct stat made = {}, source = {}, origin = {};
    if (stat(path.c_str(), &made) != 0 || !input.problem.empty()) return false;
    const bool hasSource = input.path != "-" && stat(input.path.c_str(), &source) == 0;
    if (!hasSource) return true;
    const std::string other = SourceOf(path);
    if (!other.empty() && stat(other.c_str(), &origin) == 0 &&
        (origin.st_dev != source.st_dev || origin.st_ino != source.st_ino)) {
        FailWriting(path + " was made from " + other +
                    ": --keep-tree FOLDER keeps the folders of the inputs");
    }
    return std::pair(made.st_mtim.tv_sec, made.st_mtim.tv_nsec) >
           std::pair(source.st_mtim.tv_sec, source.st_mtim.tv_nsec);
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

void OutputNames::Check(std::span<const Input> inputs, const OutputClaims& claims) const {
    if (!IsWanted()) return;
    if (IsStandardOutput() && inputs.size() > 1) {
        throw UsageError(option + " -: standard output takes one picture, not " +
                         std::to_string(inputs.size()));
    }
    CheckFolder();
    std::map<std::string, const Input*> owners;
    for (const Input& input : inputs) {
        if (!input.problem.empty()) continue;
        const std::string output = NameOf(input, 1);
        const auto [owner, isNew] = owners.emplace(fs::path(output).lexically_normal().string(), &input);
        if (!isNew) {
            throw UsageError(option + ": " + output + " would be written for both " + owner->second->path +
                             " and " + input.path + ": " + Remedy(*owner->second, input));
        }
    }
    for (const auto& [output, owner] : owners) {
        if (claims.IsInput(output)) throw UsageError(option + ": " + output + " is an input as well");
    }
}

}  // namespace host
