// SPDX-License-Identifier: MIT
// Built with the sources of the method once more, with the trace of branches switched on.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "binarize/RandomPages.h"
#include "regions/EdgeRegionBinarizer.h"
#include "regions/Trace.h"

namespace tavrix {
namespace {

std::set<std::string> taken;

}  // namespace

void TraceBranch(const char* name) {
    taken.insert(name);
}

namespace {

const std::set<std::string> kBranches{
    "alt: class 0",
    "alt: class 1",
    "alt: class 1, large",
    "alt: class 1, other tones",
    "alt: class 1, tones 1 or 3",
    "alt: class 1, tones 4",
    "alt: class 1, tones 4, few bright",
    "alt: class 1, tones 5",
    "alt: class 2",
    "alt: class 2, mostly dark",
    "alt: class 2, second pass",
    "alt: class 3, other tones",
    "alt: class 3, tones 1 or 3",
    "alt: class 3, tones 4",
    "alt: class 3, tones 5",
    "mask: busy, bright page",
    "mask: busy, class 1 or 3",
    "mask: busy, even, few dark pixels",
    "mask: busy, even, smoothed edges",
    "mask: busy, even, too many edges",
    "mask: busy, odd, edges",
    "mask: busy, odd, too many edges",
    "mask: medium, class 0, edges",
    "mask: medium, class 0, smoothed edges",
    "mask: medium, class 0, toned",
    "mask: medium, class 1",
    "mask: medium, dark text",
    "mask: medium, dark text, class 1",
    "mask: medium, other classes",
    "mask: quiet, class 0",
    "mask: quiet, class 1",
    "mask: quiet, edges",
    "rule: class 0",
    "rule: class 1, dark text",
    "rule: class 1, low threshold",
    "rule: class 1, no dark text",
    "rule: class 1, plain",
    "rule: class 1, second pass",
    "rule: class 1, sharpened",
    "rule: class 2, dark text",
    "rule: class 2, mostly dark",
    "rule: class 2, no dark text",
    "rule: class 2, one pass",
    "rule: class 2, second pass",
    "rule: class 2, sharpened",
    "rule: class 3",
    "rule: class 3, dark text",
    "rule: class 3, mostly dark",
    "sharp: class 0, bright",
    "sharp: class 0, few ends",
    "sharp: class 0, fewer ends",
    "sharp: class 0, many ends",
    "sharp: class 0, some ends",
    "sharp: class 1, bright",
    "sharp: class 1, few ends",
    "sharp: class 1, many ends",
    "sharp: class 1, some ends",
    "sharp: class 2",
    "sharp: class 2, dark text",
    "sharp: mostly dark",
};

template <class Run>
void RunPage(std::uint32_t seed, const Run& run) {
    const test::HostImage page = test::RandomPage(seed);
    DibImage image(page.Handle());
    EdgeRegionBinarizer method(&image);
    run(method);
}

// One branch is missing, which the rules leave without a page: a region of class 1 with the hint of dark
// text that may be sharpened. The hint comes only together with the ban on sharpening.
TEST(EdgeRegionBranches, AreAllTakenBySomePage) {
    for (const std::uint32_t seed : test::kVariedPages) {
        RunPage(seed, [](auto& method) { method.Binarize(); });
        RunPage(seed, [](auto& method) { method.BinarizeSharp(); });
    }
    for (std::uint32_t seed = 1; seed < 600; seed += 2) {
        RunPage(seed, [](auto& method) { method.Binarize(); });
        RunPage(seed, [](auto& method) { method.BinarizeBlock(); });
        RunPage(seed, [](auto& method) { method.BinarizeSharp(); });
        // As the page's measurements set it.
        RunPage(seed, [](auto& method) {
            method.darkTextHint = true;
            method.sharpenAllowed = false;
            method.BinarizeBlock();
        });
    }
    for (const std::string& branch : kBranches) EXPECT_TRUE(taken.contains(branch)) << branch;
    EXPECT_EQ(taken.size(), kBranches.size());
}

}  // namespace
}  // namespace tavrix
