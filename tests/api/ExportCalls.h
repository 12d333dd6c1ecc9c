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
    ComponentStore* store;  // extracted from the image where a function works on a store
};

struct ExportCall {
    std::string name;  // with mode
    bool byHandle;     // the image comes as a handle, else as a record
    bool needsTree;    // works on a store that holds components
    bool takes1Bit, takes8Bit, takes24Bit;
    // Calls the function; false when it gave its refusal value. result is written to as the function does.
    bool (*function)(const CallInput& input, int mode, DibRecord* result);
    int mode;

    bool run(const CallInput& input, DibRecord* result) const { return function(input, mode, result); }
    bool Takes(int bitCount) const {
        return bitCount == 1 ? takes1Bit : bitCount == 8 ? takes8Bit : takes24Bit;
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
