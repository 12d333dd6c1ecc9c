// SPDX-License-Identifier: MIT
#include "batch/Inputs.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <system_error>

#include "picture/Picture.h"
#include "picture/PictureWriter.h"

namespace fs = std::filesystem;

namespace host {
namespace {

void AddFolder(const fs::path& folder, std::vector<Input>& inputs) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator walk(folder, error);
    for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
        std::error_code ignored;
        const std::optional<Format> format = FormatOfName(walk->path().filename().string());
        if (walk->is_regular_file(ignored) && format && format != Format::kPdf) {
            files.push_back(walk->path());
        }
    }
    if (error) FailReading(folder.string() + ": " + error.message());
    if (files.empty()) FailReading(folder.string() + ": no pictures in this folder");
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        inputs.push_back({file.string(), file.parent_path().lexically_relative(folder)});
    }
}

std::vector<std::string> ReadList(std::istream& list) {
    std::vector<std::string> names;
    for (std::string line; std::getline(list, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) names.push_back(line);
    }
    return names;
}

}  // namespace

std::string Input::Stem() const {
    return path == "-" ? "stdin" : fs::path(path).stem().string();
}

std::string Input::Extension() const {
    const std::string extension = fs::path(path).extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

std::vector<Input> CollectInputs(const std::vector<std::string>& names, const std::string& listPath,
                                 bool isRecursive) {
    std::vector<std::string> all = names;
    if (!listPath.empty()) {
        std::vector<std::string> listed;
        if (listPath == "-") {
            listed = ReadList(std::cin);
        } else {
            std::ifstream list(listPath);
            if (!list) FailReading(listPath + ": " + std::strerror(errno));
            listed = ReadList(list);
        }
        all.insert(all.end(), listed.begin(), listed.end());
    }
    std::vector<Input> inputs;
    for (const std::string& name : all) {
        std::error_code error;
        if (isRecursive && name != "-" && fs::is_directory(name, error)) {
            AddFolder(name, inputs);
        } else {
            inputs.push_back({name, {}});
        }
    }
    return inputs;
}

}  // namespace host
