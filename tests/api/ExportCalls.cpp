// SPDX-License-Identifier: MIT
#include "api/ExportCalls.h"

#include <algorithm>
#include <cstring>

namespace tavrix::test {
namespace {

// A function whose record is input and result: result is written only where the function replaced it.
template <class Call>
bool InOut(const CallInput& input, DibRecord* result, Call call) {
    DibRecord record = input.record;
    const bool accepted = call(&record);
    if (std::memcmp(&record, &input.record, sizeof record) != 0) *result = record;
    return accepted;
}

constexpr BlockRect kBlock{1, 25, 30, 2, 0};
constexpr std::int32_t kGrow = 2;  // pixels

}  // namespace

const std::vector<ExportCall>& ExportCalls() {
    static const auto* const calls = [] {
        auto& all = *new std::vector<ExportCall>;
        const auto add = [&all](ExportCall call, std::initializer_list<int> modes) {
            const std::string name = call.name;
            for (const int mode : modes) {
                call.name = name + " " + std::to_string(mode);
                call.mode = mode;
                all.push_back(call);
            }
        };
        add({"Binarized", true, false, true, true, true,
             [](const CallInput& input, int mode, DibRecord* result) {
                 return Binarized(input.handle, result, mode) != -1;
             },
             0},
            {0, 1, 2, 3, 4, 5, 6, 8, 9});
        add({"Binarized_Separate_Block", true, false, true, true, false,
             [](const CallInput& input, int mode, DibRecord* result) {
                 return Binarized_Separate_Block(input.handle, result, mode) != -1;
             },
             0},
            {0, 5, 8});
        add({"Extract_Eight_Connected_Components", false, false, true, false, false,
             [](const CallInput& input, int mode, DibRecord*) {
                 return Extract_Eight_Connected_Components(input.record, input.store, mode, kGrow, kGrow) !=
                        0;
             },
             0},
            {1, 2});
        add({"Noise_Filter1", false, true, true, false, false,
             [](const CallInput& input, int mode, DibRecord*) {
                 return Noise_Filter1(input.record, input.store, 2, 2, mode) != 0;
             },
             0},
            {0, 1});
        add({"Grouping", false, true, true, false, false,
             [](const CallInput& input, int mode, DibRecord*) {
                 const GroupingOptions options{TAVRIX_SELECT_JOIN_PIECES, 0, 1};
                 return Grouping(input.record, input.store, &options, mode, 0x20, 0) != 0;
             },
             0},
            {0, 1, 3});
        add({"FindCardLogo", false, true, true, false, false,
             [](const CallInput& input, int, DibRecord*) {
                 const LogoRect rect = FindCardLogo(input.record, *input.store);
                 return (rect.left | rect.top | rect.right | rect.bottom) != 0;
             },
             0},
            {0});
        add({"FindTrueLineRect", false, false, true, false, false,
             [](const CallInput& input, int, DibRecord*) {
                 const GroupingOptions options{};
                 const TrueLineRect rect = FindTrueLineRect(&input.record, &options);
                 return (rect.left | rect.top | rect.right | rect.bottom) != 0;
             },
             0},
            {0});
        add({"RotateGrayImage", true, false, false, true, false,
             [](const CallInput& input, int angle, DibRecord* result) {
                 return RotateGrayImage(input.handle, angle, result) != -1;
             },
             0},
            {90});
        add({"RotateImageFree", true, false, true, true, true,
             [](const CallInput& input, int angle, DibRecord* result) {
                 return RotateImageFree(input.handle, angle, 1, result) != -1;
             },
             0},
            {0, 30, 90});
        add({"RotateFree", true, false, false, true, true,
             [](const CallInput& input, int angle, DibRecord* result) {
                 const HGLOBAL second = RotateFree(input.handle, angle, 1, result);
                 return second != nullptr && GlobalFree(second) == nullptr;
             },
             0},
            {30});
        add({"RotateImageBlock", false, false, true, false, false,
             [](const CallInput& input, int code, DibRecord* result) {
                 return RotateImageBlock(input.record, kBlock, code, result) != -1;
             },
             0},
            {0, 1, 2, 3, 4, 5});
        add({"Morphology", true, false, true, true, true,
             [](const CallInput& input, int operation, DibRecord* result) {
                 return Morphology(input.handle, result, operation) != 0;
             },
             0},
            {0, 1, 2, 3, 4, 5});
        add({"Morphology by record", false, false, true, true, true,
             [](const CallInput& input, int operation, DibRecord* result) {
                 return InOut(input, result,
                              [&](DibRecord* record) { return Morphology(nullptr, record, operation) != 0; });
             },
             0},
            {0, 1});
        add({"RemoveImageBorder", true, false, true, true, true,
             [](const CallInput& input, int, DibRecord* result) {
                 return RemoveImageBorder(input.handle, result) != 0;
             },
             0},
            {0});
        add({"CopyImgWithWhiteSurr", false, false, true, false, false,
             [](const CallInput& input, int, DibRecord* result) {
                 return InOut(input, result, [&](DibRecord* record) {
                     std::int32_t steps = -1;
                     CopyImgWithWhiteSurr(record, &steps);
                     const bool replaced = record->header != input.record.header;
                     return replaced || steps != -1;
                 });
             },
             0},
            {0});
        return &all;
    }();
    return *calls;
}

std::string TestNameOf(const testing::TestParamInfo<ExportCall>& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

}  // namespace tavrix::test
