// SPDX-License-Identifier: MIT
#include "findings/CompareSheet.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include "operations/Operations.h"
#include "picture/PictureWriter.h"

namespace host {
namespace {

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>%TITLE%</title>
<style>
body { margin: 1.5rem; font: 15px/1.4 system-ui, sans-serif; color: #222; background: #e9e9ec; }
h1 { font-size: 1.4rem; margin: 0 0 .2rem; }
p { margin: 0 0 1rem; color: #555; }
section { display: grid; grid-template-columns: repeat(auto-fill, minmax(22rem, 1fr)); gap: 1rem; margin-bottom: 2rem; }
figure { margin: 0; padding: .8rem; background: #fff; border-radius: 6px; box-shadow: 0 1px 3px #0003; }
figure img { display: block; width: 100%; height: auto; border: 1px solid #ccc; cursor: zoom-in; }
figure input { display: none; }
figure:has(input:checked) { grid-column: 1 / -1; overflow: auto; }
figure input:checked + img { width: auto; cursor: zoom-out; }
h2 { font-size: 1rem; margin: .6rem 0 .1rem; }
figcaption { color: #555; }
dl { display: flex; gap: 1.5rem; margin: .4rem 0 0; }
dl div { display: flex; flex-direction: column-reverse; }
dt { font-size: .8rem; color: #777; }
dd { margin: 0; font-weight: 600; color: #222; }
</style>
</head>
<body>
)";

std::string Base64(const std::vector<std::uint8_t>& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t rest = bytes.size() - i;
        const unsigned group =
            bytes[i] << 16 | (rest > 1 ? bytes[i + 1] << 8 : 0) | (rest > 2 ? bytes[i + 2] : 0);
        text += kDigits[group >> 18];
        text += kDigits[group >> 12 & 63];
        text += rest > 1 ? kDigits[group >> 6 & 63] : '=';
        text += rest > 2 ? kDigits[group & 63] : '=';
    }
    return text;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            default: escaped += c;
        }
    }
    return escaped;
}

std::string Formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// The image that a click shows in full size.
std::string Image(Format format, const char* type, Picture picture, const std::string& name) {
    std::vector<Picture> page;
    page.push_back(std::move(picture));
    return "<label><input type=\"checkbox\"><img alt=\"" + name + "\" src=\"data:image/" + type + ";base64," +
           Base64(EncodePictures(format, page)) + "\"></label>\n";
}

std::string Entry(const char* name, const std::string& value) {
    return std::string("<div><dt>") + name + "</dt><dd>" + value + "</dd></div>";
}

std::string Figure(const Trial& trial, const Resolution& resolution) {
    const std::string name = std::to_string(trial.mode.number) + " " + std::string(trial.mode.name);
    return "<figure id=\"" + std::string(trial.mode.name) + "\">\n" +
           Image(Format::kPng, "png", {trial.bits.Copy(), resolution}, name) + "<h2>" + name +
           "</h2>\n<figcaption>" + std::string(trial.mode.suits) + "</figcaption>\n<dl>" +
           Entry("black", Formatted("%.2f %%", 100 * trial.blackShare)) +
           Entry("components", std::to_string(trial.components)) +
           Entry("time", Formatted("%.1f ms", trial.milliseconds)) + "</dl>\n</figure>\n";
}

std::size_t CountComponents(const HostImage& bits) {
    std::size_t count = 0;
    for (const FoundBlock& block : FindComponents(bits, {})) {
        for (const FoundLine& line : block.lines) count += line.components.size();
    }
    return count;
}

}  // namespace

ComparedPage ComparePage(Picture picture) {
    if (picture.image.BitCount() == 1) {
        throw PictureError(PictureError::kFailed, "is a 1-bit picture already: all modes give the same");
    }
    ComparedPage page{std::move(picture), {}};
    const double area = static_cast<double>(page.picture.image.Width()) * page.picture.image.Height();
    for (const Mode& mode : kModes) {
        HostImage copy = page.picture.image.Copy();  // gray pictures are worked on in place
        const auto start = std::chrono::steady_clock::now();
        HostImage bits = Binarize(std::move(copy), mode);
        const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
        const double blackShare = static_cast<double>(CountBlack(bits)) / area;
        const std::size_t components = CountComponents(bits);
        page.trials.push_back({mode, std::move(bits), blackShare, components, spent.count()});
    }
    return page;
}

std::string ComposeSheet(const std::string& file, const std::vector<ComparedPage>& pages) {
    std::string html = kHead;
    const std::string title = Escaped(file);
    html.replace(html.find("%TITLE%"), 7, title);
    html += "<h1>" + title + "</h1>\n";
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const Picture& picture = pages[i].picture;
        html += "<p>";
        if (pages.size() > 1) html += "Page " + std::to_string(i + 1) + ": ";
        html += std::to_string(picture.image.Width()) + " &times; " + std::to_string(picture.image.Height()) +
                " pixels";
        if (picture.resolution.IsKnown()) html += Formatted(", %.0f dots per inch", picture.resolution.x);
        html += "</p>\n<section>\n<figure id=\"original\">\n" +
                Image(Format::kJpeg, "jpeg", {picture.image.Copy(), picture.resolution}, "original") +
                "<h2>original</h2>\n</figure>\n";
        for (const Trial& trial : pages[i].trials) html += Figure(trial, picture.resolution);
        html += "</section>\n";
    }
    return html + "</body>\n</html>\n";
}

}  // namespace host
