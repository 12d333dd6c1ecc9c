// SPDX-License-Identifier: MIT
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "commands/Commands.h"
#include "commands/PictureCommand.h"
#include "operations/Operations.h"

namespace host {
namespace {

struct BinarizeOptions {
    FileOptions files;
    PictureOptions output;
    Mode mode = DefaultMode();
    bool byBlocks = false;
    std::vector<int> specks;  // largest width and height; empty: all stay
};

Picture Clean(Picture page, const BinarizeOptions& options) {
    HostImage bits = Binarize(std::move(page.image), options.mode, options.byBlocks);
    if (!options.specks.empty()) bits = Despeckle(std::move(bits), {options.specks[0], options.specks[1]});
    return {std::move(bits), page.resolution};
}

}  // namespace

void AddBinarizeCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command =
        *app.add_subcommand("binarize", "Turn scans and photographs into clean 1-bit pictures");
    const auto options = std::make_shared<BinarizeOptions>();
    options->output.bits = 1;
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    AddModeOption(command, options->mode);
    command.add_flag("--blocks", options->byBlocks,
                     "Treat the picture as one block in modes regions and lines");
    AddNumbersOption(command, "--despeckle", 2, "WIDTH,HEIGHT", options->specks,
                     "Remove components of at most this size, thin rules and large frames");
    command.callback([options, &code] {
        if (options->byBlocks && !options->mode.hasBlocks) {
            throw UsageError("mode " + std::string(options->mode.name) + " cannot be used with --blocks");
        }
        code = RunPictureCommand(options->files, options->output,
                                 [&options](Picture page) { return Clean(std::move(page), *options); });
    });
}

void AddModesCommand(CLI::App& app) {
    CLI::App& command = *app.add_subcommand("modes", "List the binarization modes");
    command.callback([] {
        for (const Mode& mode : kModes) {
            std::printf("%d  %-9s %s\n", mode.number, mode.name.data(), mode.suits.data());
        }
    });
}

}  // namespace host
