// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "batch/Jobs.h"
#include "batch/OutputNames.h"
#include "commands/PageCollection.h"
#include "picture/PictureReader.h"
#include "picture/PictureWriter.h"

namespace host {

// What every command that works on files takes.
struct FileOptions : InputOptions {
    bool isForced = false;
    bool skipsExisting = false;
    std::int64_t maxPixels = kMaxPixels;
    JobOptions jobs;
};

void AddFileOptions(CLI::App& command, FileOptions& options);

// Where pictures go.
struct PictureOptions {
    std::string place;
    std::string pattern;
    std::string extension = "tif";  // of files in a folder and on standard output
    int bits = 0;                   // a pixel of what the command makes; 0: as the picture
};

void AddPictureOptions(CLI::App& command, PictureOptions& options);

// An option whose value is the extension of a picture format.
void AddFormatOption(CLI::App& command, const std::string& name, std::string& extension,
                     const std::string& description);

// An option of count numbers, none negative, with commas between them. form: as the help shows it.
void AddNumbersOption(CLI::App& command, const std::string& name, std::size_t count, const std::string& form,
                      std::vector<int>& numbers, const std::string& text);

// Whether a place is a folder, or is to become one.
bool IsFolder(const std::string& place);
// Standard output, a pipe or a device: its name does not tell a format.
bool IsStream(const std::string& place);

// Where the results of several inputs become the pages of one file, a PDF whose name has no fields: their
// collection; else null. Throws UsageError.
std::unique_ptr<PageCollection> CollectionOf(const PictureOptions& output, const FileOptions& files,
                                             const std::vector<Input>& inputs);

// Collects one input's pages and writes them when all are there, or every page at once where the name
// asks for it, or hands them on to a collection.
class PictureSink {
  public:
    PictureSink(const OutputNames& names, const std::string& standardExtension, const Input& input,
                OutputClaims& claims, bool skipsExisting, Effort effort = Effort::kSmall,
                PageCollection* collection = nullptr);
    ~PictureSink();
    PictureSink(const PictureSink&) = delete;
    PictureSink& operator=(const PictureSink&) = delete;

    // Nothing is left to write: the output is there already. Outputs by page are looked at one by one.
    bool IsAllDone() const;
    void Add(Picture page);
    void Finish();

  private:
    void Write(const std::string& path, const std::vector<Picture>& pictures) const;

    const OutputNames& names;
    const std::string& standardExtension;
    const Input& input;
    OutputClaims& claims;
    bool skipsExisting;
    Effort effort;
    PageCollection* collection;
    std::size_t pageCount = 0;
    std::vector<Picture> pages;
};

// Throws UsageError when no picture format has the extension of the names, or it cannot hold pictures of
// that many bits (0: any). standardExtension: the format of standard output and devices.
void CheckPictureName(const std::string& option, const std::string& place, const std::string& pattern,
                      const std::string& standardExtension, int bits);

// Inputs of a command, after the checks that come before any work. Throws UsageError, PictureError.
InputList InputsOf(const FileOptions& options);

// Throws PictureError when the input was no file in the first place.
std::unique_ptr<PictureReader> OpenInput(const Input& input, const FileOptions& options,
                                         Colours colours = Colours::kNeeded);

}  // namespace host
