// SPDX-License-Identifier: MIT
#include "api/ExportCalls.h"

#include <algorithm>
#include <cstring>

namespace tavrix::test {
namespace {

constexpr unsigned kTakesGray = kTakes8Bit | kTakes24Bit;

// A function whose record is input and result: result is written only where the function replaced it.
template <class Call>
bool InOut(const CallInput& input, DibRecord* result, Call call) {
    DibRecord record = input.record;
    const bool accepted = call(&record);
    if (std::memcmp(&record, &input.record, sizeof record) != 0) *result = record;
    return accepted;
}

// All-zero rectangles are refusals.
template <class Rect>
bool HasSides(const Rect& rect) {
    return (rect.left | rect.top | rect.right | rect.bottom) != 0;
}

std::vector<ExportCall> MakeCalls() {
    std::vector<ExportCall> calls;
    const auto add = [&](const std::string& name, std::initializer_list<int> modes, unsigned traits,
                         decltype(ExportCall::function) function) {
        for (const int mode : modes) {
            calls.push_back({name + "_" + std::to_string(mode), traits, function, mode});
        }
    };
    add("Binarized", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, kTakesAll | kByHandle | kInPlace | kArrivesUnlocked,
        [](const CallInput& input, int mode, DibRecord* result) {
            return Binarized(input.handle, result, mode) != -1;
        });
    add("Binarized_Separate_Block", {0, 5, 8}, kTakes1Bit | kTakes8Bit | kByHandle | kInPlace,
        [](const CallInput& input, int mode, DibRecord* result) {
            return Binarized_Separate_Block(input.handle, result, mode) != -1;
        });
    add("Extract_Eight_Connected_Components", {1, 2}, kTakes1Bit,
        [](const CallInput& input, int mode, DibRecord*) {
            return Extract_Eight_Connected_Components(input.record, input.store, mode, 2, 2) != 0;
        });
    add("Noise_Filter1", {0, 1}, kTakes1Bit | kNeedsTree, [](const CallInput& input, int mode, DibRecord*) {
        return Noise_Filter1(input.record, input.store, 2, 2, mode) != 0;
    });
    add("Grouping", {0, 1, 3}, kTakes1Bit | kNeedsTree, [](const CallInput& input, int mode, DibRecord*) {
        const GroupingOptions options{TAVRIX_SELECT_JOIN_PIECES, 0, 1};
        return Grouping(input.record, input.store, &options, mode, 0x20, 0) != 0;
    });
    add("FindCardLogo", {0}, kTakes1Bit | kNeedsTree, [](const CallInput& input, int, DibRecord*) {
        return HasSides(FindCardLogo(input.record, *input.store));
    });
    add("FindTrueLineRect", {0}, kTakes1Bit, [](const CallInput& input, int, DibRecord*) {
        const GroupingOptions options{};
        return HasSides(FindTrueLineRect(&input.record, &options));
    });
    add("RotateGrayImage", {90}, kTakes8Bit | kByHandle,
        [](const CallInput& input, int angle, DibRecord* result) {
            return RotateGrayImage(input.handle, angle, result) != -1;
        });
    add("RotateImageFree", {0, 30, 90}, kTakesAll | kByHandle,
        [](const CallInput& input, int angle, DibRecord* result) {
            return RotateImageFree(input.handle, angle, 1, result) != -1;
        });
    add("RotateFree", {30}, kTakesGray | kByHandle, [](const CallInput& input, int angle, DibRecord* result) {
        const HGLOBAL second = RotateFree(input.handle, angle, 1, result);
        if (second == nullptr) return false;
        EXPECT_EQ(GlobalFlags(second), 1u);
        EXPECT_NE(second, GlobalHandle(result->header));
        return GlobalFree(second) == nullptr;
    });
    add("RotateImageBlock", {0, 1, 2, 3, 4, 5}, kTakes1Bit,
        [](const CallInput& input, int code, DibRecord* result) {
            return RotateImageBlock(input.record, {1, 25, 30, 2, 0}, code, result) != -1;
        });
    add("Morphology", {0, 1, 2, 3, 4, 5}, kTakesAll | kByHandle | kInPlace,
        [](const CallInput& input, int operation, DibRecord* result) {
            return Morphology(input.handle, result, operation) != 0;
        });
    add("MorphologyByRecord", {0, 1}, kTakesAll | kInPlace,
        [](const CallInput& input, int operation, DibRecord* result) {
            return InOut(input, result,
                         [&](DibRecord* record) { return Morphology(nullptr, record, operation) != 0; });
        });
    add("RemoveImageBorder", {0}, kTakesAll | kByHandle, [](const CallInput& input, int, DibRecord* result) {
        return RemoveImageBorder(input.handle, result) != 0;
    });
    add("CopyImgWithWhiteSurr", {0}, kTakes1Bit, [](const CallInput& input, int, DibRecord* result) {
        return InOut(input, result, [&](DibRecord* record) {
            std::int32_t steps = -1;
            CopyImgWithWhiteSurr(record, &steps);
            return record->header != input.record.header || steps != -1;
        });
    });
    return calls;
}

}  // namespace

const std::vector<ExportCall>& ExportCalls() {
    static const std::vector<ExportCall> calls = MakeCalls();
    return calls;
}

std::string TestNameOf(const testing::TestParamInfo<ExportCall>& info) {
    return info.param.name;
}

}  // namespace tavrix::test
