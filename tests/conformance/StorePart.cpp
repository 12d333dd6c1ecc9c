// SPDX-License-Identifier: MIT
#include <algorithm>
#include <fstream>

#include "Digest.h"
#include "Outcome.h"

namespace tavrix::conformance {
namespace {

std::int64_t SlotOf(const ComponentStore& store, const ComponentNode* node) {
    return node != nullptr ? node - store.nodes : -1;
}

}  // namespace

StorePart::StorePart(const ComponentStore& store)
    : counters{store.state,      store.growStep,  store.threadedCount, store.liveCount,
               store.blockCount, store.lineCount, store.componentCount} {
    AddList(store, store.firstBlock, 0);
    for (const ComponentNode* node = store.freeList; node != nullptr; node = node->next) {
        freeSlots.push_back(SlotOf(store, node));
    }
}

void StorePart::AddList(const ComponentStore& store, const ComponentNode* first, std::int64_t depth) {
    for (const ComponentNode* node = first; node != nullptr; node = node->next) {
        nodes.push_back({depth, SlotOf(store, node), SlotOf(store, node->prev), SlotOf(store, node->parent),
                         node->left, node->top, node->right, node->bottom, node->tag, node->kind,
                         node->pixelCount, node->lineHeight});
        if (node->kind != NODE_COMPONENT) AddList(store, node->firstChild, depth + 1);
    }
}

// Digests of the counters and free nodes, of the nodes of each level, and of each group of fields.
std::string StorePart::Description() const {
    Digest head;
    for (const std::int64_t counter : counters) head.Add(counter);
    for (const std::int64_t slot : freeSlots) head.Add(slot);
    std::string text = "head " + head.Long();
    constexpr const char* kLevels[] = {"blocks", "lines", "components"};
    for (std::int64_t depth = 0; depth < 3; ++depth) {
        Digest digest;
        std::size_t count = 0;
        for (const Node& node : nodes) {
            if (node[kDepth] != depth) continue;
            ++count;
            for (const std::int64_t value : node) digest.Add(value);
        }
        text += " " + std::to_string(count) + " " + kLevels[depth] + (count != 0 ? " " + digest.Short() : "");
    }
    if (nodes.empty()) return text;
    const struct {
        const char* name;
        Field from, to;
    } groups[] = {{"links", kSlot, kParent}, {"sides", kLeft, kBottom}, {"other", kTag, kHeight}};
    for (const auto& group : groups) {
        Digest digest;
        for (const Node& node : nodes) {
            for (std::size_t field = group.from; field <= group.to; ++field) digest.Add(node[field]);
        }
        text += std::string(" ") + group.name + " " + digest.Short();
    }
    return text;
}

std::string StorePart::DifferenceTo(const Part& otherPart) const {
    const auto& other = dynamic_cast<const StorePart&>(otherPart);
    for (std::size_t i = 0; i < std::min(nodes.size(), other.nodes.size()); ++i) {
        const auto [here, there] = std::mismatch(nodes[i].begin(), nodes[i].end(), other.nodes[i].begin());
        if (here == nodes[i].end()) continue;
        return "node " + std::to_string(i) + " of the tree, " + kFieldNames[here - nodes[i].begin()] + ": " +
               std::to_string(*here) + " instead of " + std::to_string(*there);
    }
    if (nodes.size() != other.nodes.size()) {
        return std::to_string(nodes.size()) + " nodes instead of " + std::to_string(other.nodes.size());
    }
    if (counters != other.counters) return "the counters";
    return freeSlots != other.freeSlots ? "the order of the free nodes" : "";
}

std::string StorePart::TextOf(const Node& node) const {
    std::string text(static_cast<std::size_t>(2 * node[kDepth]), ' ');
    for (std::size_t field = kSlot; field < kFields; ++field) {
        text +=
            std::string(field == kSlot ? "" : ", ") + kFieldNames[field] + " " + std::to_string(node[field]);
    }
    return text;
}

void StorePart::Write(const std::string& path) const {
    std::ofstream file(path + ".txt");
    file << "state, growStep, threadedCount, liveCount, blockCount, lineCount, componentCount:";
    for (const std::int64_t counter : counters) file << ' ' << counter;
    file << "\n";
    for (const Node& node : nodes) file << TextOf(node) << "\n";
    file << "free slots:";
    for (const std::int64_t slot : freeSlots) file << ' ' << slot;
    file << "\n";
}

}  // namespace tavrix::conformance
