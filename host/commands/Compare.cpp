// SPDX-License-Identifier: MIT
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "batch/OutputFile.h"
#include "commands/Commands.h"
#include "commands/FileOptions.h"
#include "findings/CompareSheet.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

struct CompareOptions {
    FileOptions files;
    std::string place;
};

ExitCode Compare(const CompareOptions& options) {
    const OutputNames names("-o", options.place, "{stem}.html");
    if (!IsFolder(options.place) && !IsStream(options.place) && !options.place.ends_with(".html") &&
        !options.place.ends_with(".htm")) {
        throw UsageError("-o " + options.place + ": the sheet is a page of HTML: name it .html");
    }
    if (names.IsByPage()) throw UsageError("-o: all pages of a picture share one sheet: {page} has no place");
    const InputList inputs = InputsOf(options.files);
    OutputClaims claims(inputs, options.files.isForced);
    names.Check(inputs, claims);
    return RunJobs(inputs, options.files.jobs, [&](const Input& input, Outcome& outcome) {
        const std::string path = names.NameOf(input, 1);
        if (options.files.skipsExisting && path != "-" && names.IsDone(input, 1)) {
            outcome.isSkipped = true;
            return;
        }
        std::vector<ComparedPage> pages;
        const auto reader = OpenInput(input, options.files);
        while (std::optional<Picture> page = reader->Next()) {
            outcome.isRead = true;
            pages.push_back(ComparePage(std::move(*page)));
        }
        if (std::all_of(pages.begin(), pages.end(), [](const auto& page) { return page.trials.empty(); })) {
            throw PictureError(PictureError::kFailed, "is a 1-bit picture already: all modes give the same");
        }
        const std::string sheet = ComposeSheet(input.path, pages);
        claims.Claim(path);
        WriteWhole(path, {reinterpret_cast<const std::uint8_t*>(sheet.data()), sheet.size()}, input.path);
    });
}

}  // namespace

void AddCompareCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command =
        *app.add_subcommand("compare", "Write a page of HTML that shows a picture under every mode");
    const auto options = std::make_shared<CompareOptions>();
    AddFileOptions(command, options->files);
    command.add_option("-o,--output", options->place, "HTML file, folder, or -")
        ->type_name("OUTPUT")
        ->required();
    command.callback([options, &code] { code = Compare(*options); });
}

}  // namespace host
