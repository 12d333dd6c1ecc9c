// SPDX-License-Identifier: MIT
#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "commands/Commands.h"
#include "commands/Convert.h"
#include "commands/PictureCommand.h"
#include "operations/Operations.h"

namespace host {
namespace {

struct MorphOperation {
    std::string_view name;
    int code;  // as Morphology takes it
    bool isOneBit;
};

constexpr std::array<MorphOperation, 6> kOperations = {{{"edge", 0, false},
                                                        {"open", 1, true},
                                                        {"close", 2, true},
                                                        {"smooth", 3, false},
                                                        {"sharpen", 4, false},
                                                        {"dilate", 5, true}}};

struct MorphOptions {
    FileOptions files;
    PictureOptions output;
    ConvertOptions convert;
    MorphOperation operation = kOperations[0];
};

}  // namespace

void AddMorphCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("morph", "Filter pictures by their neighbourhoods");
    const auto options = std::make_shared<MorphOptions>();
    command
        .add_option_function<std::string>(
            "--op",
            [options](const std::string& text) {
                for (const MorphOperation& operation : kOperations) {
                    if (text != operation.name && text != std::to_string(operation.code)) continue;
                    options->operation = operation;
                    return;
                }
                throw CLI::ValidationError("--op", "no operation " + text);
            },
            "On gray: edge (1-bit result), smooth, sharpen; on 1-bit pictures: open, close, dilate")
        ->required()
        ->type_name("edge|open|close|smooth|sharpen|dilate");
    AddFileOptions(command, options->files);
    AddPictureOptions(command, options->output);
    AddModeOption(command, options->convert);
    command.callback([options, &code] {
        const std::string_view operation = options->operation.name;
        options->output.bits = operation == "edge" || options->operation.isOneBit ? 1 : 8;
        code = RunPictureCommand(options->files, options->output, [&options](Picture page, Outcome& outcome) {
            HostImage image = options->operation.isOneBit
                                  ? Convert(std::move(page.image), options->convert, outcome).bits
                                  : ToGray(std::move(page.image));
            return Picture{RunMorphology(std::move(image), options->operation.code), page.resolution};
        });
    });
}

}  // namespace host
