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
body { margin: 0; padding: 1rem; font: 15px/1.4 system-ui, sans-serif; color: #222; background: #e9e9ec; }
h1 { font-size: 1.4rem; margin: 0 0 .6rem; overflow-wrap: anywhere; }
section { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 22rem), 1fr)); gap: 1rem; margin-bottom: 2rem; }
h2 { grid-column: 1 / -1; margin: 0; font-size: 1rem; font-weight: 400; color: #444; }
figure { margin: 0; min-width: 0; padding: .8rem; background: #fff; border-radius: 6px; box-shadow: 0 1px 3px #0003; }
label { display: block; position: relative; }
img { display: block; box-sizing: border-box; width: 100%; height: auto; border: 1px solid #ccc; cursor: zoom-in; }
input { position: absolute; opacity: 0; }
input:focus-visible + img { outline: 3px solid #0b57d0; }
figure:has(input:checked) { grid-column: 1 / -1; overflow: auto; }
input:checked + img { width: auto; cursor: zoom-out; }
h3 { font-size: 1rem; margin: .6rem 0 .1rem; }
p { margin: 0; color: #555; }
dl { display: flex; gap: 1.5rem; margin: .4rem 0 0; }
dl div { display: flex; flex-direction: column-reverse; }
dt { font-size: .8rem; color: #555; }
dd { margin: 0; font-weight: 600; }
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

// The image, which a click or the space bar shows in full size, with a caption.
std::string Figure(Format format, const Picture& picture, const std::string& name,
                   const std::string& caption) {
    std::vector<Picture> page;
    page.push_back({picture.image.Copy(), picture.resolution});
    return "<figure>\n<label><input type=\"checkbox\" aria-label=\"" + name + " in full size\"><img alt=\"" +
           name + "\" src=\"data:image/" + (format == Format::kPng ? "png" : "jpeg") + ";base64," +
           Base64(EncodePictures(format, page)) + "\"></label>\n<figcaption>\n<h3>" + name + "</h3>\n" +
           caption + "</figcaption>\n</figure>\n";
}

std::string Entry(const char* name, const std::string& value) {
    return std::string("<div><dt>") + name + "</dt><dd>" + value + "</dd></div>";
}

std::string NameOf(const Mode& mode) {
    const std::string name(mode.name);
    return mode.number < 0 ? name : std::to_string(mode.number) + " " + name;
}

std::string Remarks(const Conversion& conversion) {
    std::string html;
    if (conversion.choice) html += "<p>" + Escaped(Described(*conversion.choice)) + "</p>\n";
    for (const std::string& warning : conversion.warnings) html += "<p>" + Escaped(warning) + "</p>\n";
    return html;
}

std::string TrialFigure(const Trial& trial, const Resolution& resolution) {
    return Figure(Format::kPng, {trial.conversion.bits.Copy(), resolution}, NameOf(trial.mode),
                  "<p>" + std::string(trial.mode.suits) + "</p>\n" + Remarks(trial.conversion) + "<dl>" +
                      Entry("black", Formatted("%.2f %%", 100 * trial.blackShare)) +
                      Entry("components", std::to_string(trial.components)) +
                      Entry("time", Formatted("%.1f ms", trial.milliseconds)) + "</dl>\n");
}

std::string OriginalFigure(const ComparedPage& page) {
    if (!page.trials.empty()) return Figure(Format::kJpeg, page.picture, "original", "");
    return Figure(Format::kPng, page.picture, "original", "<p>1 bit already: every mode gives this</p>\n");
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
    ComparedPage page{std::move(picture), {}};
    if (page.picture.image.BitCount() == 1) return page;
    std::vector<Mode> modes = {kAutomaticMode};
    modes.insert(modes.end(), kModes.begin(), kModes.end());
    for (const Mode& mode : modes) {
        HostImage copy = page.picture.image.Copy();  // gray pictures are worked on in place
        const auto start = std::chrono::steady_clock::now();
        Conversion conversion = ToBlackAndWhite(std::move(copy), {mode});
        const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
        const double blackShare = BlackShare(conversion.bits);
        const std::size_t components = CountComponents(conversion.bits);
        page.trials.push_back({mode, std::move(conversion), blackShare, components, spent.count()});
    }
    return page;
}

std::string ComposeSheet(const std::string& file, const std::vector<ComparedPage>& pages) {
    std::string html = kHead;
    const std::string title = Escaped(file);
    html.replace(html.find("%TITLE%"), 7, title);
    html += "<main>\n<h1>" + title + "</h1>\n";
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const Picture& picture = pages[i].picture;
        html += "<section>\n<h2>";
        if (pages.size() > 1) html += "Page " + std::to_string(i + 1) + ": ";
        html += std::to_string(picture.image.Width()) + " &times; " + std::to_string(picture.image.Height()) +
                " pixels";
        if (picture.resolution.IsKnown()) html += Formatted(", %.0f dots per inch", picture.resolution.x);
        html += "</h2>\n" + OriginalFigure(pages[i]);
        for (const Trial& trial : pages[i].trials) html += TrialFigure(trial, picture.resolution);
        html += "</section>\n";
    }
    return html + "</main>\n</body>\n</html>\n";
}

}  // namespace host
