// SPDX-License-Identifier: MIT
#include "findings/Report.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "batch/Printable.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormatVersion = 1;  // counts up when a key changes its meaning or goes
constexpr char kCoordinates[] = "pixels of the picture as displayed, column 0 at the left, row 0 on top";

Json JsonOf(const Box& box) {
    return {{"left", box.left}, {"top", box.top}, {"right", box.right}, {"bottom", box.bottom}};
}

Json JsonOf(const std::optional<Box>& box) {
    return box ? JsonOf(*box) : Json(nullptr);
}

Json JsonOf(const FoundLine& line) {
    Json components = Json::array();
    for (const FoundComponent& component : line.components) {
        Json entry = {{"box", JsonOf(component.box)}};
        if (component.pixels != 0) entry["pixels"] = component.pixels;
        components.push_back(std::move(entry));
    }
    Json json = {{"box", JsonOf(line.box)}};
    if (line.height != 0) json["characterHeight"] = line.height;
    json["components"] = std::move(components);
    return json;
}

Json JsonOf(const FoundBlock& block) {
    Json lines = Json::array();
    for (const FoundLine& line : block.lines) lines.push_back(JsonOf(line));
    return {{"box", JsonOf(block.box)}, {"lines", std::move(lines)}};
}

struct Counts {
    std::size_t lines = 0;
    std::size_t components = 0;
};

Counts CountsOf(const std::vector<FoundLine>& lines) {
    Counts counts = {lines.size(), 0};
    for (const FoundLine& line : lines) counts.components += line.components.size();
    return counts;
}

Counts CountsOf(const std::vector<FoundBlock>& blocks) {
    Counts counts;
    for (const FoundBlock& block : blocks) {
        const Counts inside = CountsOf(block.lines);
        counts.lines += inside.lines;
        counts.components += inside.components;
    }
    return counts;
}

double Rounded(double share) {
    constexpr double kDigits = 1e6;
    return std::round(share * kDigits) / kDigits;
}

Json HeadOf(const PageFacts& page) {
    return {
        {"format", kFormatVersion}, {"coordinates", kCoordinates}, {"file", page.file}, {"page", page.page}};
}

// On one line, with the control characters spelled out that JSON leaves as they are.
std::string LineOf(const Json& json) {
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<std::uint8_t>(text[i]);
        const auto second = static_cast<std::uint8_t>(i + 1 < text.size() ? text[i + 1] : 0);
        char code[7];
        if (byte == 0x7F || (byte == 0xC2 && second < 0xA0)) {
            std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(byte == 0x7F ? byte : second));
            line += code;
            i += byte == 0xC2;
        } else {
            line += text[i];
        }
    }
    return line + "\n";
}

std::string TextOf(const Box& box) {
    return std::to_string(box.left) + "," + std::to_string(box.top) + "," + std::to_string(box.right) + "," +
           std::to_string(box.bottom);
}

}  // namespace

std::string ReportJson(const PageFacts& page, const Findings& findings) {
    Json json = HeadOf(page);
    json["size"] = {{"width", page.width}, {"height", page.height}};
    json["resolution"] =
        page.resolution.IsKnown() ? Json{{"x", page.resolution.x}, {"y", page.resolution.y}} : Json(nullptr);
    json["mode"] = page.mode.empty() ? Json(nullptr) : Json(page.mode);
    json["scale"] = page.scale;
    if (page.confidence) json["confidence"] = Rounded(*page.confidence);
    json["blackShare"] = Rounded(page.blackShare);
    json["warnings"] = page.warnings;
    if (findings.blocks) {
        const Counts counts = CountsOf(*findings.blocks);
        json["counts"] = {
            {"blocks", findings.blocks->size()}, {"lines", counts.lines}, {"components", counts.components}};
        Json& blocks = json["blocks"] = Json::array();
        for (const FoundBlock& block : *findings.blocks) blocks.push_back(JsonOf(block));
    }
    if (findings.lines) {
        Json& lines = json["lines"] = Json::array();
        for (const FoundLine& line : *findings.lines) lines.push_back(JsonOf(line));
    }
    if (findings.trueLine) json["trueLine"] = JsonOf(*findings.trueLine);
    if (findings.logo) json["logo"] = JsonOf(*findings.logo);
    if (findings.isTruncated) json["truncated"] = true;
    return LineOf(json);
}

std::string ErrorJson(const PageFacts& page, const std::string& reason) {
    Json json = HeadOf(page);
    json["error"] = reason;
    return LineOf(json);
}

bool HoldsError(std::string_view reports) {
    return reports.find("\"error\":") != std::string_view::npos;  // inside of strings quotes have backslashes
}

std::string ReportText(const PageFacts& page, const Findings& findings) {
    const std::string name =
        Printable(page.file) + (page.page > 1 ? " page " + std::to_string(page.page) : "") + ": ";
    std::string text;
    if (findings.blocks) {
        const Counts counts = CountsOf(*findings.blocks);
        text += name + std::to_string(findings.blocks->size()) + " blocks, " + std::to_string(counts.lines) +
                " lines, " + std::to_string(counts.components) + " components\n";
    }
    if (findings.lines) {
        text += name + std::to_string(findings.lines->size()) + " text lines\n";
        for (const FoundLine& line : *findings.lines) {
            text += name + "line " + TextOf(line.box) + " with " + std::to_string(line.components.size()) +
                    " components\n";
        }
    }
    if (findings.trueLine)
        text += name + "true line " + (*findings.trueLine ? TextOf(**findings.trueLine) : "none") + "\n";
    if (findings.logo) text += name + "logo " + (*findings.logo ? TextOf(**findings.logo) : "none") + "\n";
    return text;
}

}  // namespace host
