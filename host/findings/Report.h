// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operations/Findings.h"
#include "picture/Picture.h"

namespace host {

// The page that findings belong to.
struct PageFacts {
    std::string file;
    std::size_t page = 1;
    int width = 0;
    int height = 0;
    Resolution resolution;
    std::string mode;                  // of the binarization; empty for a page that was 1-bit
    double blackShare = 0;             // of the pixels of the 1-bit picture
    int scale = 1;                     // of the 1-bit picture
    std::optional<double> confidence;  // of the automatic mode
    std::vector<std::string> warnings;
};

// One JSON object on one line (docs/command.md has the schema).
std::string ReportJson(const PageFacts& page, const Findings& findings);
// The object in place of a page that failed.
std::string ErrorJson(const PageFacts& page, const std::string& reason);
// Whether reports hold such an object.
bool HoldsError(std::string_view reports);
// A few words a page, or a line of text for every text line.
std::string ReportText(const PageFacts& page, const Findings& findings);

}  // namespace host
