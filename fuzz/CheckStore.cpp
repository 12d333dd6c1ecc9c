// SPDX-License-Identifier: MIT
#include "CheckStore.h"

#include <vector>

#include "Block.h"

namespace tavrix::fuzz {
namespace {

class Walk {
  public:
    explicit Walk(const ComponentStore& checkedStore) : store(checkedStore), isSeen(store.threadedCount) {}

    void Level(const ComponentNode* first, const ComponentNode* parent, unsigned depth) {
        const ComponentNode* before = nullptr;
        for (const ComponentNode* node = first; node != nullptr; node = node->next) {
            See(node);
            Require(node->prev == before, "prev names the node before");
            Require(node->parent == parent, "parent names the parent");
            ++counts[depth];
            if (depth < 2) Level(node->firstChild, node, depth + 1);
            before = node;
        }
    }

    void Free() {
        for (const ComponentNode* node = store.freeList; node != nullptr; node = node->next) {
            See(node);
            ++freeCount;
        }
    }

    std::uint32_t counts[3] = {};
    std::uint32_t freeCount = 0;

  private:
    void See(const ComponentNode* node) {
        const std::ptrdiff_t slot = node - store.nodes;
        Require(slot >= 0 && slot < static_cast<std::ptrdiff_t>(isSeen.size()), "a node in the node block");
        Require(node == store.nodes + slot, "a node at a slot");
        Require(!isSeen[slot], "a node is in one place only");
        isSeen[slot] = true;
    }

    const ComponentStore& store;
    std::vector<bool> isSeen;
};

}  // namespace

void CheckStore(const ComponentStore& store, std::uint32_t spareSlots) {
    Require(store.threadedCount <= TAVRIX_STORE_CAPACITY, "slots within the block");
    Walk walk(store);
    walk.Level(store.firstBlock, nullptr, 0);
    walk.Free();
    const std::uint32_t live = walk.counts[0] + walk.counts[1] + walk.counts[2];
    Require(store.blockCount == walk.counts[0], "blockCount");
    Require(store.lineCount == walk.counts[1], "lineCount");
    Require(store.componentCount == walk.counts[2], "componentCount");
    Require(store.liveCount == live, "liveCount");
    Require(store.threadedCount == live + walk.freeCount + spareSlots, "no slot is lost");
}

}  // namespace tavrix::fuzz
