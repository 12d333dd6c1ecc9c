// SPDX-License-Identifier: MIT
#include "Outcome.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace tavrix::conformance {
namespace {

// The pieces of a text between separators.
std::vector<std::string> Split(const std::string& text, const std::string& separator) {
    std::vector<std::string> pieces;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(separator, from)) != std::string::npos;
         from = at + separator.size()) {
        pieces.push_back(text.substr(from, at - from));
    }
    pieces.push_back(text.substr(from));
    return pieces;
}

// The first of the bands that `length` rows or bytes are divided into whose digests differ: its first one and
// the one after its last.
std::array<int, 2> FirstBand(const std::string& expected, const std::string& found, int length) {
    constexpr std::size_t kDigits = 4;
    const auto bands = static_cast<int>(expected.size() / kDigits);
    int band = 0;
    for (std::size_t at = 0; expected.compare(at, kDigits, found, at, kDigits) == 0; at += kDigits) ++band;
    return {band * length / bands, (band + 1) * length / bands};
}

std::string DifferenceOfParts(const std::string& expected, const std::string& found) {
    const std::vector<std::string> then = Split(expected, " ");
    const std::vector<std::string> now = Split(found, " ");
    int width = 0;
    int height = 0;
    int bits = 0;
    const bool isImage = then.size() > 1 && then.size() == now.size() && then[1] == now[1] &&
                         std::sscanf(then[1].c_str(), "%dx%dx%d", &width, &height, &bits) == 3;
    std::string text = then[0] + ":";
    for (std::size_t i = 1; i < std::max(then.size(), now.size()); ++i) {
        const std::string was = i < then.size() ? then[i] : "nothing";
        const std::string is = i < now.size() ? now[i] : "nothing";
        if (was == is) continue;
        const std::string label = i > 1 ? then[std::min(i, then.size()) - 1] : "";
        if (isImage && label == "rows" && was.size() == is.size()) {
            const auto [from, to] = FirstBand(was, is, height);
            text += " first in rows " + std::to_string(from) + " to " + std::to_string(to - 1);
        } else if (isImage && label == "columns" && was.size() == is.size()) {
            const auto [from, to] = FirstBand(was, is, (bits * width + 31) / 32 * 4);
            text += " first in columns " + std::to_string(from * 8 / bits) + " to " +
                    std::to_string(std::min(to * 8 / bits, width) - 1);
        } else {
            text += " " + label + (label.empty() ? "" : " ") + is + " instead of " + was;
        }
    }
    return text;
}

}  // namespace

std::string NumbersPart::Description() const {
    std::string text;
    for (const std::int64_t number : numbers) text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
}

std::string NumbersPart::DifferenceTo(const Part& other) const {
    const std::string here = Description();
    const std::string there = other.Description();
    return here == there ? "" : here + " instead of " + there;
}

void NumbersPart::Write(const std::string& path) const {
    std::ofstream(path + ".txt") << Description() << "\n";
}

void Outcome::Add(const std::string& name, std::unique_ptr<const Part> part) {
    parts.push_back({name, std::move(part)});
}

void Outcome::AddNumbers(const std::string& name, std::vector<std::int64_t> values) {
    Add(name, std::make_unique<NumbersPart>(std::move(values)));
}

std::string Outcome::Text() const {
    std::string text;
    for (const Named& named : parts) {
        text += (text.empty() ? "" : "; ") + named.name + " " + named.part->Description();
    }
    return text;
}

std::string Outcome::DifferenceTo(const Outcome& other) const {
    if (parts.size() != other.parts.size()) return "another number of results";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].name != other.parts[i].name) return parts[i].name + " instead of " + other.parts[i].name;
        const std::string difference = parts[i].part->DifferenceTo(*other.parts[i].part);
        if (!difference.empty()) return parts[i].name + ": " + difference;
    }
    return "";
}

void Outcome::Write(const std::string& folder) const {
    for (const Named& named : parts) named.part->Write(folder + "/" + named.name);
}

std::string DifferenceOfTexts(const std::string& expected, const std::string& found) {
    const std::vector<std::string> then = Split(expected, "; ");
    const std::vector<std::string> now = Split(found, "; ");
    std::string text;
    for (std::size_t i = 0; i < std::max(then.size(), now.size()); ++i) {
        if (i >= then.size() || i >= now.size()) return text + "another number of results";
        if (then[i] != now[i]) text += (text.empty() ? "" : "; ") + DifferenceOfParts(then[i], now[i]);
    }
    return text;
}

}  // namespace tavrix::conformance
