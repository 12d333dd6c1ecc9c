// SPDX-License-Identifier: MIT
#include "batch/Inputs.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <system_error>

#include "batch/OutputFile.h"
#include "batch/TemporaryNames.h"
#include "picture/PictureReader.h"
#include "picture/PictureWriter.h"

namespace fs = std::filesystem;

namespace host {
namespace {

// The search of one folder and those below it.
class FolderSearch {
  public:
    FolderSearch(const fs::path& searched, InputList& found) : root(searched), inputs(found) {
        const std::size_t before = inputs.size();
        Enter(root);
        if (inputs.size() == before) inputs.push_back({root.string(), {}, "no pictures in this folder"});
    }

  private:
    void Enter(const fs::path& folder) {
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator walk(folder, error); !error && walk != fs::directory_iterator();
             walk.increment(error)) {
            entries.push_back(*walk);
        }
        if (error) inputs.push_back({folder.string(), {}, error.message()});
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry& entry : entries) {
            std::error_code ignored;
            if (entry.is_directory(ignored) && !entry.is_symlink(ignored)) {
                Enter(entry.path());
            } else if (entry.is_regular_file(ignored)) {
                AddFile(entry.path());
            }
        }
    }

    void AddFile(const fs::path& file) {
        const std::string name = file.filename().string();
        if (TemporaryName::IsOne(name)) return;
        if (FormatOfName(name) || LooksLikePicture(file.string())) {
            inputs.push_back({file.string(), file.parent_path().lexically_relative(root), {}});
        } else {
            ++inputs.notPictures;
        }
    }

    const fs::path root;
    InputList& inputs;
};

std::vector<std::string> ReadList(std::istream& list, const InputOptions& options) {
    std::vector<std::string> names;
    for (std::string line; std::getline(list, line, options.endsNamesWithNull ? '\0' : '\n');) {
        if (!options.endsNamesWithNull) {
            if (line.find('\0') != std::string::npos) {
                throw UsageError("--files-from " + options.list +
                                 ": the names end with NUL characters: add -0 (--null)");
            }
            if (!line.empty() && line.back() == '\r') line.pop_back();
        }
        if (!line.empty()) names.push_back(line);
    }
    if (list.bad()) FailReading(options.list + ": " + std::strerror(errno));
    return names;
}

std::vector<std::string> ReadList(const InputOptions& options) {
    if (options.list == "-") return ReadList(std::cin, options);
    std::ifstream list(options.list);
    if (!list) FailReading(options.list + ": " + std::strerror(errno));
    return ReadList(list, options);
}

fs::path Absolute(const std::string& path) {
    return fs::absolute(path).lexically_normal();
}

void KeepTree(InputList& inputs, const std::string& treeRoot) {
    const fs::path root = Absolute(treeRoot + "/").parent_path();
    for (Input& input : inputs) {
        if (input.path == "-" || !input.problem.empty()) continue;
        input.folder = Absolute(input.path).parent_path().lexically_relative(root);
        if (input.folder.empty() || *input.folder.begin() == "..") {
            throw UsageError("--keep-tree " + treeRoot + ": " + input.path + " is not in this folder");
        }
    }
}

// Of the files that a search has found, those that an earlier run has made from other inputs.
void LeaveOutEarlierOutputs(InputList& inputs, const std::set<std::string>& found) {
    std::set<std::string> paths;
    for (const Input& input : inputs) {
        if (input.problem.empty()) paths.insert(Absolute(input.path).string());
    }
    const auto isOutput = [&](const Input& input) {
        if (!found.contains(input.path) || !input.problem.empty()) return false;
        const std::string source = SourceOf(input.path);
        return source != Absolute(input.path) && paths.contains(source);
    };
    inputs.earlierOutputs = std::erase_if(inputs, isOutput);
}

}  // namespace

std::string Input::Stem() const {
    if (path == "-") return "stdin";
    const std::string stem = fs::path(path).stem().string();
    return stem == "." || stem == ".." ? std::string(stem.size(), '_') : stem;  // never a way out
}

std::string Input::Extension() const {
    const std::string extension = fs::path(path).extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

InputList CollectInputs(const InputOptions& options) {
    std::vector<std::string> names = options.names;
    if (!options.list.empty()) {
        const std::vector<std::string> listed = ReadList(options);
        names.insert(names.end(), listed.begin(), listed.end());
    }
    InputList inputs;
    std::set<std::string> found;
    for (const std::string& name : names) {
        std::error_code error;
        if (name.empty()) {
            inputs.push_back({name, {}, "the name is empty"});
        } else if (options.isRecursive && name != "-" && fs::is_directory(name, error)) {
            const std::size_t before = inputs.size();
            const FolderSearch search(name, inputs);
            for (std::size_t i = before; i < inputs.size(); ++i) found.insert(inputs[i].path);
        } else {
            inputs.push_back({name, {}, {}});
        }
    }
    if (!found.empty()) LeaveOutEarlierOutputs(inputs, found);
    if (!options.treeRoot.empty()) KeepTree(inputs, options.treeRoot);
    return inputs;
}

}  // namespace host
