// SPDX-License-Identifier: MIT
#include "automatic/Despeckle.h"

#include <set>
#include <tuple>
#include <vector>

#include "automatic/AreaTree.h"
#include "operations/Operations.h"
#include "picture/Picture.h"
#include "tavrix/component_store.hpp"

namespace host {
namespace {

using tavrix::host::Children;
using tavrix::host::Store;

// Sides of components, as the store has them: left, lowest row, right, highest row.
using Sides = std::tuple<int, int, int, int>;
using Components = std::set<Sides>;

constexpr int kBySize = 0;  // mode of Noise_Filter1

Components ComponentsOf(const Store& store) {
    Components components;
    for (const ComponentNode& block : store.blocks()) {
        for (const ComponentNode& line : Children(block)) {
            for (const ComponentNode& node : Children(line)) {
                components.insert({node.left, node.bottom, node.right, node.top});
            }
        }
    }
    return components;
}

// Makes the components that have exactly these sides white; others that reach into their boxes stay. No two
// can touch all four sides of a box without touching each other.
HostImage Without(const HostImage& image, const Components& components) {
    const AreaTree tree(image, nullptr);
    std::vector<bool> isInk;
    for (const Area& area : tree.Areas()) {
        const auto row = [&image](int y) { return image.Height() - 1 - y; };
        isInk.push_back(area.isDark &&
                        !components.contains({area.left, row(area.bottom), area.right, row(area.top)}));
    }
    return tree.Paint(isInk);
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
        for (const Sides& kept : ComponentsOf(store)) components.erase(kept);
        if (options.keepsLarge) {
            std::erase_if(components, [&options](const Sides& sides) {
                const auto [left, low, right, high] = sides;
                return right - left >= options.width || high - low >= options.height;
            });
        }
        if (!components.empty()) image = Without(image, components);
        isDone = components.empty() || !isFull;
    }
    return image;
}

}  // namespace host
