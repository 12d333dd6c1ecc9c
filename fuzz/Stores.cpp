// SPDX-License-Identifier: MIT
//
// What hosts do with component stores: partly filled and nearly full ones, boxes of any kind, every option
// word, any order of calls. After every call the tree is whole.
#include <cstring>

#include "Block.h"
#include "CheckStore.h"

namespace tavrix::fuzz {
namespace {

constexpr int kMaxSide = 64;
constexpr int kMaxBoxes = 120;

// One node block for all inputs: only what an input has used is cleared.
class ReusedStore {
  public:
    ReusedStore() {
        store.nodes = static_cast<ComponentNode*>(
            GlobalLock(GlobalAlloc(GPTR, std::size_t{TAVRIX_STORE_CAPACITY} * sizeof(ComponentNode))));
        Require(store.nodes != nullptr, "memory for the store");
    }

    // freeSlots: 0 for a fresh store, else how many are left in one that is otherwise full.
    void Reset(std::uint32_t freeSlots, std::uint32_t growStep) {
        std::memset(static_cast<void*>(store.nodes + firstUsed), 0,
                    (store.threadedCount - firstUsed) * sizeof(ComponentNode));
        ComponentNode* const nodes = store.nodes;
        store = {};
        store.nodes = nodes;
        store.state = TAVRIX_STORE_ALLOCATED;
        store.growStep = growStep;
        spareSlots = firstUsed = freeSlots == 0 ? 0 : TAVRIX_STORE_CAPACITY - freeSlots;
        store.threadedCount = freeSlots == 0 ? 100 : TAVRIX_STORE_CAPACITY;
        store.freeList = nodes + firstUsed;
        for (std::uint32_t i = firstUsed + 1; i < store.threadedCount; ++i) nodes[i - 1].next = nodes + i;
    }

    void Check() const { CheckStore(store, spareSlots); }

    ComponentStore store{};

  private:
    std::uint32_t firstUsed = 0;
    std::uint32_t spareSlots = 0;
};

// The host's own inserts, as the published layout asks: at the head of the parent's children.
ComponentNode* Insert(ComponentStore& store, ComponentNode* parent, std::uint32_t kind,
                      std::uint32_t& count) {
    ComponentNode* const node = store.freeList;
    if (node == nullptr) return nullptr;
    store.freeList = node->next;
    ComponentNode*& head = parent != nullptr ? parent->firstChild : store.firstBlock;
    node->kind = kind;
    node->parent = parent;
    node->prev = nullptr;
    node->firstChild = nullptr;
    node->next = head;
    node->pixelCount = 0;
    if (head != nullptr) head->prev = node;
    head = node;
    ++store.liveCount;
    ++count;
    return node;
}

std::int16_t TakeSide(Input& input, bool isWild) {
    return isWild ? input.Take<std::int16_t>() : static_cast<std::int16_t>(input.Below(256));
}

void TakeBox(Input& input, ComponentNode& node) {
    const int kind = input.Byte();
    const bool isWild = kind % 16 == 0, mayBeInverted = kind % 8 == 1;
    node.left = TakeSide(input, isWild);
    node.bottom = TakeSide(input, isWild);
    node.right = TakeSide(input, isWild);
    node.top = TakeSide(input, isWild);
    if (mayBeInverted) return;
    if (kind % 8 > 2) {  // small, as characters are
        node.right = static_cast<std::int16_t>(node.left + (node.right & 31));
        node.top = static_cast<std::int16_t>(node.bottom + (node.top & 31));
    }
    if (node.right < node.left) std::swap(node.left, node.right);
    if (node.top < node.bottom) std::swap(node.bottom, node.top);
}

void Populate(Input& input, ComponentStore& store) {
    ComponentNode *block = nullptr, *line = nullptr;
    for (int boxes = input.Below(kMaxBoxes); boxes > 0 && !input.IsEmpty(); --boxes) {
        const int where = input.Byte();
        if (block == nullptr || where % 32 == 0) {
            block = Insert(store, nullptr, NODE_BLOCK, store.blockCount);
            if (block == nullptr) return;
            TakeBox(input, *block);
            line = nullptr;
        }
        if (line == nullptr || where % 16 == 1) {
            line = Insert(store, block, NODE_LINE, store.lineCount);
            if (line == nullptr) return;
            TakeBox(input, *line);
        }
        ComponentNode* const component = Insert(store, line, NODE_COMPONENT, store.componentCount);
        if (component == nullptr) return;
        TakeBox(input, *component);
        component->pixelCount = input.Take<std::uint8_t>();
    }
}

void Call(Input& input, const DibRecord& image, ComponentStore& store) {
    const GroupingOptions options{input.Take<std::uint16_t>(), 0, input.Take<std::uint16_t>()};
    const int size = input.Take<std::int16_t>();
    const int call = input.Below(10);
    if (call < 2 && store.firstBlock != nullptr) return;  // extraction asks for a store without a tree
    switch (call) {
        case 0: Extract_Eight_Connected_Components(image, &store, 1, 0, 0); break;
        case 1: Extract_Eight_Connected_Components(image, &store, 2, size, input.Take<std::int16_t>()); break;
        case 2: Noise_Filter1(image, &store, size, input.Byte(), 0); break;
        case 3: Noise_Filter1(image, &store, 0, 0, 1); break;
        case 4: Grouping(image, &store, nullptr, 0, 0, 0); break;
        case 5: Grouping(image, &store, nullptr, 1, 0, 0); break;
        case 6: FindCardLogo(image, store); break;
        default: Grouping(image, &store, &options, 3, input.Take<std::uint16_t>(), 0); break;
    }
}

}  // namespace
}  // namespace tavrix::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavrix::fuzz;
    static ReusedStore reused;
    Input input(data, size);
    const int room = input.Byte();
    reused.Reset(room % 4 == 0 ? 1 + input.Byte() : 0, 1 + input.Below(200));
    Input calls = input;
    for (int i = 0; i < 6; ++i) input.Take<std::uint64_t>();  // what the calls take
    const Block image(input, 1, kMaxSide);
    if (room % 3 != 0) Populate(input, reused.store);
    reused.Check();
    for (int count = 1 + calls.Below(4); count > 0; --count) {
        Call(calls, image.Record(), reused.store);
        reused.Check();
    }
    return 0;
}
