// SPDX-License-Identifier: MIT
#include "commands/FileOptions.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "batch/OutputFile.h"
#include "picture/PictureReader.h"

namespace fs = std::filesystem;

namespace host {

bool IsFolder(const std::string& place) {
    std::error_code error;
    return !place.empty() && (place.back() == '/' || fs::is_directory(place, error));
}

bool IsStream(const std::string& place) {
    std::error_code error;
    const fs::file_status status = fs::status(place, error);
    return place == "-" || (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status));
}

void AddFileOptions(CLI::App& command, FileOptions& options) {
    command.add_option("INPUT", options.names,
                       std::string("Pictures (") + kReadFormats + "), folders with -r, or -");
    command
        .add_option("--files-from", options.list, "Read names of inputs from a file, one a line, or from -")
        ->type_name("FILE");
    command.add_flag("-0,--null", options.endsNamesWithNull,
                     "Names in that list end with NUL, not with lines");
    command.add_flag("-r,--recursive", options.isRecursive, "Take all pictures in folders and below");
    command
        .add_option("--keep-tree", options.treeRoot,
                    "Outputs keep the folders that their inputs have below this one")
        ->type_name("FOLDER");
    command
        .add_option("-j,--jobs", options.jobs.threads, "Pictures to work on at the same time; 0: one a core")
        ->type_name("N")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    command.add_option("--max-pixels", options.maxPixels, "Refuse pages of more pixels")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{1}, kMaxSide * kMaxSide))
        ->capture_default_str();
    command.add_flag("-q,--quiet", options.jobs.isQuiet, "No progress, only errors");
    command.add_flag("--skip-existing", options.skipsExisting,
                     "Leave out inputs whose output is there and newer");
    command.add_flag("--force", options.isForced, "Replace outputs that are read-only");
}

void AddPictureOptions(CLI::App& command, PictureOptions& options) {
    command.add_option("-o,--output", options.place, "File (the extension chooses the format), folder, or -")
        ->type_name("OUTPUT");
    command
        .add_option("--name", options.pattern,
                    "Names in an output folder: {stem}, {ext}, {dir} and {page} are filled in")
        ->type_name("PATTERN");
    AddFormatOption(command, "--format", options.extension, "Format in a folder and on standard output");
}

void AddFormatOption(CLI::App& command, const std::string& name, std::string& extension,
                     const std::string& description) {
    command.add_option(name, extension, description)
        ->type_name("EXT")
        ->check([](const std::string& text) {
            return FormatOfName("." + text) || FormatOfName("x." + text)
                       ? std::string()
                       : "must be " + std::string(kFormatNames);
        })
        ->capture_default_str();
}

void AddNumbersOption(CLI::App& command, const std::string& name, std::size_t count, const std::string& form,
                      std::vector<int>& numbers, const std::string& text) {
    const auto parse = [name, count, form, &numbers](const std::string& given) {
        numbers.clear();
        for (const std::string& part : CLI::detail::split(given, ',')) {
            int number = -1;
            const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), number);
            if (error != std::errc() || end != part.data() + part.size() || number < 0 || number > kMaxSide)
                break;
            numbers.push_back(number);
        }
        if (numbers.size() != count ||
            std::count(given.begin(), given.end(), ',') + 1 != std::ptrdiff_t(count)) {
            throw CLI::ValidationError(
                name, given + " is not " + form + ", numbers of 0 to " + std::to_string(kMaxSide));
        }
    };
    command.add_option_function<std::string>(name, parse, text)->type_name(form);
}

std::unique_ptr<PageCollection> CollectionOf(const PictureOptions& output, const FileOptions& files,
                                             const std::vector<Input>& inputs) {
    const std::string& place = output.place;
    if (IsFolder(place) || inputs.size() < 2 || place.find('{') != std::string::npos) return nullptr;
    if (FormatOfName(IsStream(place) ? "x." + output.extension : place) != Format::kPdf) return nullptr;
    if (files.skipsExisting)
        throw UsageError("--skip-existing cannot be used with one PDF of several inputs");
    return std::make_unique<PageCollection>(inputs);
}

PictureSink::PictureSink(const OutputNames& outputNames, const std::string& extension, const Input& source,
                         OutputClaims& outputClaims, bool isResuming, Effort packing,
                         PageCollection* pageCollection)
    : names(outputNames),
      standardExtension(extension),
      input(source),
      claims(outputClaims),
      skipsExisting(isResuming),
      effort(packing),
      collection(pageCollection) {}

PictureSink::~PictureSink() {
    if (collection != nullptr) collection->Deliver(input, {});  // it failed
}

bool PictureSink::IsAllDone() const {
    return !names.IsWanted() || (!names.IsStandardOutput() && !names.IsByPage() && names.IsDone(input, 1));
}

void PictureSink::Add(Picture page) {
    if (!names.IsWanted()) return;
    ++pageCount;
    pages.push_back(std::move(page));
    if (!names.IsByPage()) return;
    if (!skipsExisting || !names.IsDone(input, pageCount)) Write(names.NameOf(input, pageCount), pages);
    pages.clear();
}

void PictureSink::Finish() {
    if (collection != nullptr) return std::exchange(collection, nullptr)->Deliver(input, std::move(pages));
    if (!pages.empty()) Write(names.NameOf(input, 1), pages);
}

void PictureSink::Write(const std::string& path, const std::vector<Picture>& pictures) const {
    const std::optional<Format> format = FormatOfName(IsStream(path) ? "x." + standardExtension : path);
    if (!format) FailWriting("cannot write " + path + ": the extension must be " + kFormatNames);
    claims.Claim(path);
    WriteWhole(path, EncodePictures(*format, pictures, effort), input.path);
}

void CheckPictureName(const std::string& option, const std::string& place, const std::string& pattern,
                      const std::string& standardExtension, int bits) {
    if (place.empty()) return;
    const bool isStream = IsStream(place);
    const std::string name = isStream ? "x." + standardExtension : IsFolder(place) ? pattern : place;
    if (name.ends_with("{ext}")) return;
    const std::string what = option + " " + (isStream ? place + " --format " + standardExtension : name);
    const std::optional<Format> format = FormatOfName(name);
    if (!format && (name.ends_with(".html") || name.ends_with(".htm"))) {
        throw UsageError(what + ": only tavrix compare writes HTML; the extension must be " + kFormatNames);
    }
    if (!format) {
        throw UsageError(what + ": the extension must be " + kFormatNames +
                         " (the name of a new folder ends with /)");
    }
    const std::string reason = bits == 0 ? "" : Misfit(*format, bits);
    if (!reason.empty()) throw UsageError(what + ": " + reason);
}

std::unique_ptr<PictureReader> OpenInput(const Input& input, const FileOptions& options, Colours colours) {
    if (!input.problem.empty()) FailReading(input.problem);
    return OpenPicture(input.path, options.maxPixels, colours);
}

InputList InputsOf(const FileOptions& options) {
    InputList inputs = CollectInputs(options);
    if (inputs.empty()) throw UsageError("no inputs given");
    return inputs;
}

}  // namespace host
