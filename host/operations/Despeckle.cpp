// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <tuple>

#include "operations/Operations.h"
#include "picture/Picture.h"
#include "tavrix/component_store.hpp"

namespace host {
namespace {

using tavrix::host::Children;
using tavrix::host::Store;

// Sides of components, as the store has them, and their black pixels.
using Sides = std::tuple<int, int, int, int>;  // left, lowest row, right, highest row
using Components = std::map<Sides, std::uint32_t>;

constexpr int kBySize = 0;  // mode of Noise_Filter1

Components ComponentsOf(const Store& store) {
    Components components;
    for (const ComponentNode& block : store.blocks()) {
        for (const ComponentNode& line : Children(block)) {
            for (const ComponentNode& node : Children(line)) {
                components[{node.left, node.bottom, node.right, node.top}] = node.pixelCount;
            }
        }
    }
    return components;
}

// Makes the component that has exactly these sides white; others that reach into its box stay.
void Erase(HostImage& image, const Sides& sides, std::uint32_t pixelCount) {
    const auto [left, low, right, high] = sides;
    const auto bitOf = [&image](int x, int y) -> std::pair<std::uint8_t&, std::uint8_t> {
        return {image.Record().bits[image.RowBytes() * static_cast<std::size_t>(y) + x / 8],
                static_cast<std::uint8_t>(0x80 >> x % 8)};
    };
    cv::Mat1b ink(high - low + 1, right - left + 1);
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            const auto [byte, bit] = bitOf(left + x, low + y);
            ink(y, x) = (byte & bit) == 0;
        }
    }
    if (static_cast<std::uint32_t>(cv::countNonZero(ink)) != pixelCount) {
        cv::Mat1i labels, facts;
        cv::Mat1d centres;
        const int count = cv::connectedComponentsWithStats(ink, labels, facts, centres, 8, CV_32S);
        // No two can touch all four sides of a box without touching each other.
        int own = 1;
        while (own < count &&
               (facts(own, cv::CC_STAT_WIDTH) != ink.cols || facts(own, cv::CC_STAT_HEIGHT) != ink.rows))
            ++own;
        ink = labels == own;
    }
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            if (ink(y, x) == 0) continue;
            const auto [byte, bit] = bitOf(left + x, low + y);
            byte = static_cast<std::uint8_t>(byte | bit);
        }
    }
}

}  // namespace

HostImage Despeckle(HostImage image, const DespeckleOptions& options) {
    for (bool isDone = false; !isDone;) {
        Store store;
        if (Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0) != 1) {
            throw PictureError(PictureError::kFailed,
                               "Extract_Eight_Connected_Components refused the picture");
        }
        // A full store has left components out: they come in the next round, when there is room for them.
        const bool isFull = store.header().liveCount + 2 >= TAVRIX_STORE_CAPACITY;
        Components components = ComponentsOf(store);
        if (Noise_Filter1(image.Record(), store.get(), options.width, options.height, kBySize) != 1) {
            throw PictureError(PictureError::kFailed, "Noise_Filter1 refused the picture");
        }
        for (const auto& kept : ComponentsOf(store)) components.erase(kept.first);
        if (options.keepsLarge) {
            std::erase_if(components, [&options](const auto& component) {
                const auto [left, low, right, high] = component.first;
                return right - left >= options.width || high - low >= options.height;
            });
        }
        for (const auto& [sides, pixels] : components) Erase(image, sides, pixels);
        isDone = components.empty() || !isFull;
    }
    return image;
}

}  // namespace host
