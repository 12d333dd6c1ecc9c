// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tavrix/tavrix.h"

// Every exported function behind one form, for the tests of what they have in common.
namespace tavrix::test {

struct CallInput {
    HGLOBAL handle;
    DibRecord record;
    ComponentStore* store;
};

enum Traits : unsigned {
    kTakes1Bit = 1,
    kTakes8Bit = 2,
    kTakes24Bit = 4,
    kTakesAll = kTakes1Bit | kTakes8Bit | kTakes24Bit,
    kByHandle = 8,         // the image comes as a handle, else as a record
    kNeedsTree = 16,       // works on a store that holds components
    kInPlace = 32,         // works on images of 1 and 8 bits where they are
    kArrivesUnlocked = 64  // a result that was worked out, not copied
};

struct ExportCall {
    std::string name;  // with mode
    unsigned traits;
    // Calls the function; false when it gave its refusal value. result is written to as the function does.
    bool (*function)(const CallInput& input, int mode, DibRecord* result);
    int mode;

    bool operator()(const CallInput& input, DibRecord* result) const { return function(input, mode, result); }
    bool Is(Traits trait) const { return (traits & trait) != 0; }
    bool Takes(int bitCount) const {
        return Is(bitCount == 1 ? kTakes1Bit : bitCount == 8 ? kTakes8Bit : kTakes24Bit);
    }
};

// One entry for every function and mode.
const std::vector<ExportCall>& ExportCalls();

// Shown by test reports.
inline void PrintTo(const ExportCall& call, std::ostream* out) {
    *out << call.name;
}
std::string TestNameOf(const testing::TestParamInfo<ExportCall>& info);

}  // namespace tavrix::test
