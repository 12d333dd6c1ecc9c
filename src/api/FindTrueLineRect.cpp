// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"
#include "components/ComponentTree.h"
#include "components/PrivateStore.h"

using namespace tavrix;

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
        const ComponentNode* line = store::FirstLine(components);
        return line != nullptr ? TrueLineRect{line->left, line->top, line->right, line->bottom} : kNone;
    });
}
