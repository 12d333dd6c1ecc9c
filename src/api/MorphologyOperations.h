// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tavrix::api {

// The numbers by which hosts name the neighbourhood operations.
enum MorphologyOperation : std::uint32_t { kEdgeMap, kOpening, kClosing, kSmooth, kSharpen, kDilate };

// What gray and what 1-bit images take.
constexpr bool SuitsGray(std::uint32_t operation) {
    return operation == kEdgeMap || operation == kSmooth || operation == kSharpen;
}
constexpr bool SuitsOneBit(std::uint32_t operation) {
    return operation == kOpening || operation == kClosing || operation == kDilate;
}

}  // namespace tavrix::api
