// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

// The numbers by which hosts name the binarization methods.
namespace tavrix::api {

struct Method {
    std::int32_t mode;        // as the exports take it
    std::uint32_t id;         // as ImageTool takes it
    bool byBlocks;            // runs the method's block-wise variant
    bool needsPlane = false;  // analyses the page in a plane of its own
};

inline constexpr Method kWholeImageModes[] = {
    {0, 2, false},       {1, 0, false}, {2, 3, false},       {3, 1, false},       {4, 4, false},
    {5, 5, false, true}, {6, 6, false}, {8, 8, false, true}, {9, 9, false, true},
};

inline constexpr Method kBlockModes[] = {
    {0, 2, false}, {1, 0, false}, {2, 3, false}, {3, 1, false},
    {4, 4, false}, {5, 5, true},  {6, 6, false}, {8, 8, true},
};

// Null for a mode that is not in the table.
constexpr const Method* MethodOfMode(std::span<const Method> methods, std::int32_t mode) {
    for (const Method& method : methods) {
        if (method.mode == mode) return &method;
    }
    return nullptr;
}

}  // namespace tavrix::api
