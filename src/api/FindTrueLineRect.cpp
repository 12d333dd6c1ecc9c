// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"
#include "components/ComponentStore.h"

using namespace tavrix;

namespace {

// A store that lasts for one call.
struct PrivateStore : ComponentStore {
    PrivateStore() : ComponentStore{} { store::Create(*this); }
    ~PrivateStore() { store::Release(*this); }
    PrivateStore(const PrivateStore&) = delete;
    PrivateStore& operator=(const PrivateStore&) = delete;
};

}  // namespace

extern "C" TrueLineRect TAVRIX_CALL FindTrueLineRect(const DibRecord* record,
                                                     const GroupingOptions* options) {
    constexpr TrueLineRect kNone{};
    return Guarded(kNone, [&] {
        if (record == nullptr || options == nullptr) return kNone;
        const ImagePtr image = api::Wrap(*record, api::k1Bit);
        if (!image) return kNone;

        PrivateStore components;
        ImageTool tool(image.get());
        tool.groupingOptions = options;
        tool.ExtractComponents(&components, 1, 0, 0);
        tool.GroupComponents(&components, 3);
        const ComponentNode* block = components.firstBlock;
        const ComponentNode* line = block != nullptr ? block->firstChild : nullptr;
        return line != nullptr ? TrueLineRect{line->left, line->top, line->right, line->bottom} : kNone;
    });
}
