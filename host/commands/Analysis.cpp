// SPDX-License-Identifier: MIT
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "automatic/FindCard.h"
#include "commands/AnalysisCommand.h"
#include "commands/Commands.h"
#include "operations/Operations.h"

namespace host {
namespace {

enum GroupingMode { kAlongText = 0, kAligned = 1 };
constexpr std::uint16_t kSplitWide = 1;      // any bit of splitFlags but 0x40 and 0x80
constexpr unsigned kMeasureFromLeft = 0x20;  // bits 4 to 7 of Grouping's extra

struct ComponentsOptions : AnalysisOptions {
    std::vector<int> grow;
    std::vector<int> noise;
    ExtractOptions extract;
};

struct LineOptions : AnalysisOptions {
    bool joinsPieces = false;
    bool splitsWide = false;
    bool fromLeft = false;

    GroupingOptions Grouping(bool keepsAll) const {
        int select = keepsAll ? TAVRIX_SELECT_ALL_LINES : 0;
        if (joinsPieces) select |= TAVRIX_SELECT_JOIN_PIECES;
        return {static_cast<std::uint16_t>(select), 0, splitsWide ? kSplitWide : std::uint16_t{0}};
    }
};

void AddLineOptions(CLI::App& command, LineOptions& options) {
    command.add_flag("--join-pieces", options.joinsPieces, "Join side-by-side pieces of a line first");
    command.add_flag("--split-wide", options.splitsWide, "Split components that hold several characters");
}

// What a host does with a card: clean the components, group them, look for the main line and the logo.
Findings FindAll(const Conversion& page, const LineOptions& options) {
    ExtractOptions extract;
    extract.noise = {kSpeckSide, kSpeckSide};
    extract.filtersLineNoise = true;
    extract.grouping = kAlongText;
    Findings findings;
    findings.blocks = FindComponents(page.bits, extract);
    findings.lines = FindLines(TextOf(page), options.Grouping(true), 0);
    findings.trueLine = FindTrueLine(TextOf(page), options.Grouping(false));
    findings.logo = FindLogoOf(page);
    return findings;
}

}  // namespace

void AddComponentsCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("components", "Find connected components, and group them");
    const auto options = std::make_shared<ComponentsOptions>();
    AddAnalysisOptions(command, *options);
    AddNumbersOption(command, "--grow", 2, "X,Y", options->grow,
                     "Widen every box by X columns and Y rows on each side");
    AddNumbersOption(command, "--noise", 2, "WIDTH,HEIGHT", options->noise,
                     "Leave out components of at most this size, thin rules and large frames");
    command.add_flag("--line-noise", options->extract.filtersLineNoise,
                     "Leave out what is small beside its line, and frame edges");
    command
        .add_option_function<std::string>(
            "--group",
            [options](const std::string& text) {
                options->extract.grouping = text == "text" ? kAlongText : kAligned;
            },
            "Group into blocks: along the text, or aligned ones")
        ->type_name("text|aligned")
        ->check(CLI::IsMember({"text", "aligned"}));
    command.callback([options, &code] {
        ExtractOptions& extract = options->extract;
        if (!options->grow.empty()) {
            extract.growX = options->grow[0];
            extract.growY = options->grow[1];
        }
        if (!options->noise.empty()) extract.noise = {options->noise[0], options->noise[1]};
        code = RunAnalysisCommand(*options, [&extract](const Conversion& page) {
            return Findings{FindComponents(page.bits, extract), {}, {}, {}, false};
        });
    });
}

void AddLinesCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("lines", "Find all text lines");
    const auto options = std::make_shared<LineOptions>();
    AddAnalysisOptions(command, *options);
    AddLineOptions(command, *options);
    command.add_flag("--from-left", options->fromLeft, "Measure a line from its leftmost component");
    command.callback([options, &code] {
        code = RunAnalysisCommand(*options, [&options](const Conversion& page) {
            const unsigned extra = options->fromLeft ? kMeasureFromLeft : 0;
            return Findings{{}, FindLines(TextOf(page), options->Grouping(true), extra), {}, {}, false};
        });
    });
}

void AddTrueLineCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("trueline", "Find the main text line of a card");
    const auto options = std::make_shared<LineOptions>();
    AddAnalysisOptions(command, *options);
    AddLineOptions(command, *options);
    command.callback([options, &code] {
        code = RunAnalysisCommand(*options, [&options](const Conversion& page) {
            return Findings{{}, {}, FindTrueLine(TextOf(page), options->Grouping(false)), {}, false};
        });
    });
}

void AddLogoCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand("logo", "Find the logo of a card");
    const auto options = std::make_shared<AnalysisOptions>();
    AddAnalysisOptions(command, *options);
    command.callback([options, &code] {
        code = RunAnalysisCommand(*options, [](const Conversion& page) {
            return Findings{{}, {}, {}, FindLogoOf(page), false};
        });
    });
}

void AddCardCommand(CLI::App& app, ExitCode& code) {
    CLI::App& command = *app.add_subcommand(
        "card", "Everything on a card: 1-bit picture, blocks, lines, true line, logo as JSON");
    const auto options = std::make_shared<LineOptions>();
    AddAnalysisOptions(command, *options);
    AddLineOptions(command, *options);
    command.callback([options, &code] {
        options->wantsJson |= options->jsonPlace.empty();
        code = RunAnalysisCommand(*options,
                                  [&options](const Conversion& page) { return FindAll(page, *options); });
    });
}

}  // namespace host
