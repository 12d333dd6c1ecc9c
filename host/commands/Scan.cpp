// SPDX-License-Identifier: MIT
#include <memory>
#include <utility>
#include <vector>

#include "automatic/Despeckle.h"
#include "commands/Commands.h"
#include "commands/Convert.h"
#include "commands/PictureCommand.h"
#include "commands/Preparation.h"
#include "operations/Operations.h"

namespace host {
namespace {

struct ScanOptions {
    FileOptions files;
    PictureOptions output;
    ConvertOptions convert;
    Preparation preparation = {{true, true}};
    std::vector<int> specks;  // largest width and height; empty: as the mode asks for
};

Picture Scan(Picture page, const ScanOptions& options, Outcome& outcome) {
    page = Prepare(std::move(page), options.preparation, options.convert.isVerbose, outcome);
    Conversion conversion = Convert(std::move(page.image), options.convert, outcome);
    // Rules and frames stay: a picture that is to be kept loses nothing but dirt, which the automatic mode
    // has told from colons and full stops by what is around it.
    DespeckleOptions specks = {1, 1, true};
    if (!options.specks.empty()) specks = {options.specks[0], options.specks[1], true};
    const bool isDone = options.specks.empty() && conversion.choice;
    HostImage clean = isDone ? std::move(conversion.bits) : Despeckle(std::move(conversion.bits), specks);
    const int scale = conversion.scale;
    return {std::move(clean), {page.resolution.x * scale, page.resolution.y * scale}};
}

}  // namespace

void AddScanCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command =
        *app.add_subcommand("scan", "Just make it clean: straighten, crop, binarize, remove specks");
    const auto options = std::make_shared<ScanOptions>();
    options->output.bits = 1;
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    AddModeOption(command, options->convert);
    AddScaleOption(command, options->convert);
    AddResolutionOption(command, options->preparation);
    StraightenOptions& straighten = options->preparation.straighten;
    command.add_flag("!--no-straighten", straighten.straightens, "Do not turn pictures");
    command.add_flag("!--no-crop", straighten.crops, "Do not cut pictures to the card or sheet");
    AddNumbersOption(
        command, "--despeckle", 2, "WIDTH,HEIGHT", options->specks,
        "Remove components of at most this size; unless given 1,1, in mode auto what is far from letters");
    command.callback([options, &code] {
        code = RunPictureCommand(options->files, options->output, [&options](Picture page, Outcome& outcome) {
            return Scan(std::move(page), *options, outcome);
        });
    });
}

}  // namespace host
