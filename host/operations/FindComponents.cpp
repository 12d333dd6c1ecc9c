// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <utility>

#include "operations/Operations.h"
#include "picture/Picture.h"
#include "tavrix/component_store.hpp"

namespace host {
namespace {

using tavrix::host::Children;
using tavrix::host::Store;

enum ExtractionMode { kAsFound = 1, kGrown = 2 };
enum NoiseMode { kBySize = 0, kByLine = 1 };
enum GroupingMode { kAligned = 1, kTextLines = 3 };

void Check(bool isDone, const char* operation) {
    if (!isDone) throw PictureError(PictureError::kFailed, std::string(operation) + " refused the picture");
}

Box BoxOf(const ComponentNode& node, const HostImage& image) {
    return host::BoxOf(node.left, node.top, node.right, node.bottom, image.Height());
}

Box Around(const Box& a, const Box& b) {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

std::vector<FoundLine> CopyLines(const ComponentNode& block, const HostImage& image, bool hasPixels) {
    std::vector<FoundLine> lines;
    for (const ComponentNode& line : Children(block)) {
        lines.push_back({BoxOf(line, image), line.lineHeight, {}});
        for (const ComponentNode& component : Children(line)) {
            lines.back().components.push_back(
                {BoxOf(component, image), hasPixels ? component.pixelCount : 0});
        }
        std::stable_sort(
            lines.back().components.begin(), lines.back().components.end(),
            [](const FoundComponent& a, const FoundComponent& b) { return a.box.left < b.box.left; });
    }
    return lines;
}

void Extract(const HostImage& image, Store& store, int growX = 0, int growY = 0) {
    const int mode = growX != 0 || growY != 0 ? kGrown : kAsFound;
    Check(Extract_Eight_Connected_Components(image.Record(), store.get(), mode, growX, growY) == 1,
          "Extract_Eight_Connected_Components");
}

}  // namespace

bool ExceedsStore(const HostImage& image) {
    Store store;
    Extract(image, store);
    return store.header().liveCount == TAVRIX_STORE_CAPACITY;
}

std::vector<FoundBlock> FindComponents(const HostImage& image, const ExtractOptions& options) {
    Store store;
    Extract(image, store, options.growX, options.growY);
    if (options.noise) {
        Check(Noise_Filter1(image.Record(), store.get(), options.noise->first, options.noise->second,
                            kBySize) == 1,
              "Noise_Filter1");
    }
    if (options.filtersLineNoise) {
        Check(Noise_Filter1(image.Record(), store.get(), 0, 0, kByLine) == 1, "Noise_Filter1");
    }
    if (options.grouping) Grouping(image.Record(), store.get(), nullptr, *options.grouping, 0, 0);
    std::vector<FoundBlock> blocks;
    for (const ComponentNode& block : store.blocks()) {
        FoundBlock found = {BoxOf(block, image), CopyLines(block, image, true)};
        if (found.lines.empty()) continue;  // a rest of the extraction that grouping leaves behind
        found.box = found.lines.front().box;
        for (const FoundLine& line : found.lines) found.box = Around(found.box, line.box);
        blocks.push_back(std::move(found));
    }
    return blocks;
}

std::vector<FoundLine> FindLines(const HostImage& image, const GroupingOptions& options, unsigned extra) {
    Store store;
    Extract(image, store);
    std::vector<FoundLine> lines;
    if (Grouping(image.Record(), store.get(), &options, kTextLines, extra, 0) != 1) return lines;
    for (const ComponentNode& block : store.blocks()) {
        std::vector<FoundLine> more = CopyLines(block, image, false);
        std::move(more.begin(), more.end(), std::back_inserter(lines));
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const FoundLine& a, const FoundLine& b) { return a.box.top < b.box.top; });
    return lines;
}

std::optional<Box> FindTrueLine(const HostImage& image, const GroupingOptions& options) {
    const TrueLineRect rect = FindTrueLineRect(&image.Record(), &options);
    if (rect.left == 0 && rect.top == 0 && rect.right == 0 && rect.bottom == 0) return std::nullopt;
    return host::BoxOf(rect.left, rect.top, rect.right, rect.bottom, image.Height());
}

std::optional<Box> FindLogo(const HostImage& image) {
    Store store;
    Extract(image, store);
    Check(Noise_Filter1(image.Record(), store.get(), kSpeckSide, kSpeckSide, kBySize) == 1, "Noise_Filter1");
    Grouping(image.Record(), store.get(), nullptr, kAligned, 0, 0);
    const LogoRect rect = FindCardLogo(image.Record(), *store.get());
    if (rect.left == 0 && rect.top == 0 && rect.right == 0 && rect.bottom == 0) return std::nullopt;
    return host::BoxOf(rect.left, rect.top, rect.right, rect.bottom, image.Height());
}

}  // namespace host
