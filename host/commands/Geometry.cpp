// SPDX-License-Identifier: MIT
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "commands/Commands.h"
#include "commands/Convert.h"
#include "commands/PictureCommand.h"
#include "operations/Operations.h"

namespace host {
namespace {

struct RotateOptions {
    FileOptions files;
    PictureOptions output;
    double degrees = 0;
    bool isCounterClockwise = false;
};

struct TurnOptions {
    FileOptions files;
    PictureOptions output;
    ConvertOptions convert;
    std::vector<int> block;  // left, top, right, bottom; empty: the whole picture
    int code = 0;
};

struct PadOptions {
    FileOptions files;
    PictureOptions output;
    ConvertOptions convert;
};

// In the order of RotateImageBlock's codes.
constexpr std::array kTurnNames = {"none", "right", "half", "left", "flip", "mirror-left"};

int TurnCodeOf(const std::string& text) {
    for (std::size_t code = 0; code < kTurnNames.size(); ++code) {
        if (text == kTurnNames[code] || text == std::to_string(code)) return static_cast<int>(code);
    }
    throw CLI::ValidationError("--code", "no turn " + text);
}

constexpr double kMostDegrees = 3600;
constexpr char kAngles[] = "must be a number of degrees from -3600 to 3600";

bool IsAngle(const std::string& text) {
    double degrees = 0;
    return CLI::detail::lexical_cast(text, degrees) && std::fabs(degrees) <= kMostDegrees;  // NaN is not
}

Resolution Swapped(const Resolution& resolution) {
    return {resolution.y, resolution.x};
}

Box BlockIn(const HostImage& image, const std::vector<int>& block) {
    const Box page = {0, 0, image.Width() - 1, image.Height() - 1};
    if (block.empty()) return page;
    if (block[0] > page.right || block[1] > page.bottom) {
        throw PictureError(PictureError::kFailed,
                           "--block lies outside the picture, which has columns 0 to " +
                               std::to_string(page.right) + " and rows 0 to " + std::to_string(page.bottom));
    }
    return {block[0], block[1], block[2], block[3]};
}

Picture Turn(Picture page, const TurnOptions& options, Outcome& outcome) {
    const Box box = BlockIn(page.image, options.block);
    const HostImage bits = Convert(std::move(page.image), options.convert, outcome).bits;
    const bool isQuarter = options.code == 1 || options.code == 3 || options.code == 5;
    return {TurnBlock(bits, box, options.code), isQuarter ? Swapped(page.resolution) : page.resolution};
}

}  // namespace

void AddRotateCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("rotate", "Turn pictures by any angle; right angles are exact");
    const auto options = std::make_shared<RotateOptions>();
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    command
        .add_option("-a,--angle", options->degrees,
                    "Degrees, clockwise; a negative angle turns the other way")
        ->required()
        ->type_name("DEGREES")
        ->check([](const std::string& text) { return IsAngle(text) ? std::string() : kAngles; });
    command.add_flag("-c,--counter-clockwise", options->isCounterClockwise, "Turn the other way");
    command.callback([options, &code] {
        const double degrees = options->isCounterClockwise ? -options->degrees : options->degrees;
        code = RunPictureCommand(options->files, options->output, [degrees](Picture page, Outcome&) {
            const bool isOddQuarter = std::fabs(std::fmod(degrees, 180)) == 90;
            return Picture{Rotate(std::move(page.image), degrees),
                           isOddQuarter ? Swapped(page.resolution) : page.resolution};
        });
    });
}

void AddTurnCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command =
        *app.add_subcommand("turn", "Cut a block out of 1-bit pictures and turn or mirror it");
    const auto options = std::make_shared<TurnOptions>();
    options->output.bits = 1;
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    AddModeOption(command, options->convert);
    AddNumbersOption(command, "-b,--block", 4, "LEFT,TOP,RIGHT,BOTTOM", options->block,
                     "Columns and rows, counted from 0 at the top left, inclusive");
    command
        .add_option_function<std::string>(
            "--code", [options](const std::string& text) { options->code = TurnCodeOf(text); },
            "0 none, 1 right, 2 half, 3 left, 4 flip (upside down), 5 mirror-left (mirrored, then left)")
        ->type_name("CODE")
        ->default_str("none");
    command.callback([options, &code] {
        if (!options->block.empty() &&
            (options->block[0] > options->block[2] || options->block[1] > options->block[3])) {
            throw UsageError("--block: left must not exceed right, nor top bottom");
        }
        code = RunPictureCommand(options->files, options->output, [&options](Picture page, Outcome& outcome) {
            return Turn(std::move(page), *options, outcome);
        });
    });
}

void AddPadCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("pad", "Put a white margin around 1-bit pictures");
    const auto options = std::make_shared<PadOptions>();
    options->output.bits = 1;
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    AddModeOption(command, options->convert);
    command.callback([options, &code] {
        code = RunPictureCommand(options->files, options->output, [&options](Picture page, Outcome& outcome) {
            return Picture{Pad(Convert(std::move(page.image), options->convert, outcome).bits),
                           page.resolution};
        });
    });
}

}  // namespace host
