// SPDX-License-Identifier: MIT
#include "commands/Convert.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

namespace host {
namespace {

constexpr int kMaxScale = 3;

std::string Described(const Conversion& conversion, const Mode& mode, double milliseconds) {
    std::string text = "mode " + std::string(mode.name) + ", scale " + std::to_string(conversion.scale);
    if (conversion.choice) text += ": " + Described(*conversion.choice);
    char cost[32];
    std::snprintf(cost, sizeof cost, "; %.0f ms", milliseconds);
    return text + cost;
}

}  // namespace

void AddModeOption(CLI::App& command, ConvertOptions& options) {
    const auto choose = [&options](const std::string& text) {
        const std::optional<Mode> found = FindMode(text);
        if (!found) throw CLI::ValidationError("--mode", "no mode " + text + " (tavrix modes lists them)");
        options.conversion.mode = *found;
    };
    command
        .add_option_function<std::string>("-m,--mode", choose,
                                          "Binarization mode, number or name (see tavrix modes)")
        ->type_name("MODE")
        ->default_str(std::string(kAutomaticMode.name));
    command.add_flag("-v,--verbose", options.isVerbose, "Say what was done to every page, and why");
}

void AddScaleOption(CLI::App& command, ConvertOptions& options) {
    const auto choose = [&options](const std::string& text) {
        options.conversion.scale = text == "auto" ? kAutomaticScale : std::stoi(text);
    };
    command
        .add_option_function<std::string>(
            "--scale", choose,
            "Enlarge 1 to " + std::to_string(kMaxScale) + " times first; auto: small type only")
        ->type_name("N|auto")
        ->check(CLI::IsMember({"1", "2", "3", "auto"}))
        ->default_str("1");
}

Conversion Convert(HostImage image, const ConvertOptions& options, Outcome& outcome) {
    const auto start = std::chrono::steady_clock::now();
    Conversion conversion = ToBlackAndWhite(std::move(image), options.conversion);
    const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
    for (const std::string& warning : conversion.warnings) outcome.notes.push_back("warning: " + warning);
    if (options.isVerbose)
        outcome.notes.push_back(Described(conversion, options.conversion.mode, spent.count()));
    return conversion;
}

}  // namespace host
