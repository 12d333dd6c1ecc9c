// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

#include "StoreSupport.h"
#include "components/ComponentNoiseFilter.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::Contents;
using test::HostImage;
using test::Store;

constexpr int kWidth = 1000, kHeight = 600;
constexpr std::int16_t kRight = kWidth - 1, kTop = kHeight - 1;

ComponentNode* AddLine(ComponentStore& s, const store::Box& box) {
    return store::InsertLine(s, store::InsertBlock(s, nullptr, s.firstBlock, {}), nullptr, nullptr, box);
}

ComponentNode* Add(ComponentStore& s, ComponentNode* line, int left, int bottom, int w, int h) {
    const auto side = [](int value) { return static_cast<std::int16_t>(value); };
    return store::InsertComponent(s, line, nullptr, line->firstChild,
                                  {side(left), side(bottom + h - 1), side(left + w - 1), side(bottom)});
}

// One component among larger ones that every filter keeps: whether it survives.
TEST(ComponentNoiseFilter, KeepsAndDeletesAtItsLimits) {
    using Filter = std::function<void(ComponentStore&, const DibRecord&)>;
    const Filter bySize = [](ComponentStore& s, const DibRecord& image) {
        EXPECT_EQ(Noise_Filter1(image, &s, 0x70003, 3, 0x50000), 1);
    };
    const Filter byLine = [](ComponentStore& s, const DibRecord& image) {
        EXPECT_EQ(Noise_Filter1(image, &s, 0, 0, 1), 1);
    };
    const HostImage image(kWidth, kHeight, 1);
    DibImage dib(image.Handle());
    ComponentNoiseFilter filter(&dib);
    const Filter text = [&](ComponentStore& s, const DibRecord&) { filter.FilterForTextLines(s); };
    const Filter binarization = [&](ComponentStore& s, const DibRecord&) { filter.FilterForBinarization(s); };
    struct Case {
        const Filter& filter;
        int left, bottom, w, h;
        bool isKept;
    };
    const Case cases[] = {
        {bySize, 5, 5, 3, 3, false},
        {bySize, 5, 5, 4, 3, true},
        {bySize, 5, 5, 79, 4, true},
        {bySize, 5, 5, 80, 4, false},
        {bySize, 5, 5, 4, 80, false},
        {bySize, 5, 5, 301, 301, false},
        {bySize, 5, 5, 301, 300, true},
        {byLine, 5, 5, 2, 2, false},
        {byLine, 5, 5, 3, 2, true},
        {byLine, 5, 5, 2, 3, true},
        {byLine, 0, 5, 1000, 5, true},     // long, but below twice the image's height
        {byLine, 0, 0, 500, 600, false},   // at the left edge over the whole height
        {byLine, 200, 0, 601, 600, true},  // from a fifth to four fifths
        {byLine, 200, 0, 602, 600, false},
        {byLine, 199, 0, 9, 600, false},
        {byLine, 199, 1, 9, 599, true},
        {text, 5, 5, 1, 9, false},
        {text, 5, 5, 2, 2, true},
        {text, 5, 5, 300, 256, true},
        {text, 5, 5, 301, 10, false},
        {text, 5, 5, 10, 257, false},
        {text, 5, 300, 10, -254, true},
        {text, 5, 300, 10, -255, false},  // upside down
        {binarization, 5, 5, 9, 1, false},
        {binarization, 5, 5, 301, 257, true},
        {binarization, 0, 0, 951, 550, true},
        {binarization, 0, 0, 951, 551, false},
    };
    for (const Case& c : cases) {
        Store s;
        ComponentNode* line = AddLine(s, {0, kTop, kRight, 0});
        const ComponentNode* other = Add(s, line, 100, 100, 30, 30);
        const ComponentNode* node = Add(s, line, c.left, c.bottom, c.w, c.h);
        c.filter(s, image.Record());
        EXPECT_EQ(line->firstChild, c.isKept ? node : other)
            << c.left << ' ' << c.bottom << ' ' << c.w << ' ' << c.h << ' ' << &c - cases;
    }
}

TEST(ComponentNoiseFilter, DeletesOrKeepsEmptiedLinesAndBlocks) {
    const HostImage image(kWidth, kHeight, 1);
    DibImage dib(image.Handle());
    ComponentNoiseFilter filter(&dib);
    // Per block one line: without components, with a speck, a low one, a good one.
    const auto rest = [&](auto run) {
        Store s;
        const store::Box page{0, kTop, kRight, 0};
        Add(s, AddLine(s, page), 9, 9, 20, 20);
        Add(s, AddLine(s, {0, 8, kRight, 0}), 9, 0, 20, 8);
        Add(s, AddLine(s, page), 9, 9, 1, 1);
        AddLine(s, page);
        store::InsertBlock(s, nullptr, s.firstBlock, {});
        run(s);
        std::string kinds;
        for (const ComponentNode* block : test::Siblings(s.firstBlock, nullptr)) {
            kinds += block->firstChild == nullptr               ? 'b'
                     : block->firstChild->firstChild == nullptr ? 'l'
                                                                : 'c';
        }
        return kinds;
    };
    EXPECT_EQ(rest([&](Store& s) { filter.FilterBySize(s, 2, 2); }), "cc");
    EXPECT_EQ(rest([&](Store& s) { filter.FilterLineNoise(s); }), "lcc");
    EXPECT_EQ(rest([&](Store& s) { filter.FilterForTextLines(s); }), "llc");
    EXPECT_EQ(rest([&](Store& s) { filter.FilterForBinarization(s); }), "llc");
}

TEST(ComponentNoiseFilter, RunGivesWhatRepeatedFilteringGives) {
    const HostImage image(kWidth, kHeight, 1);
    DibImage dib(image.Handle());
    ComponentNoiseFilter filter(&dib);
    for (unsigned seed = 0; seed < 20; ++seed) {
        Store expected, found;
        for (Store* s : {&expected, &found}) {
            std::mt19937 random(seed);
            const auto below = [&](unsigned bound) { return static_cast<int>(random() % bound); };
            for (int l = 0; l < 40; ++l) {
                ComponentNode* line = AddLine(*s, {0, kTop, kRight, 0});
                const unsigned largest = 3u + static_cast<unsigned>(below(40));
                for (int i = below(40); i >= 0; --i)
                    Add(*s, line, 0, 0, 1 + below(largest), 1 + below(largest));
            }
            s->growStep = 50 * seed;
        }
        int limit = 2;
        filter.FilterBySize(expected, limit, limit);
        while (expected.liveCount > expected.growStep) {
            limit += 2;
            filter.FilterBySize(expected, limit, limit);
        }
        filter.Run(found, 0, 0);
        EXPECT_EQ(Contents(found), Contents(expected)) << seed;
    }
    Store odd;  // a live node outside the tree must not keep the filter going
    odd.growStep = 0;
    store::AllocNode(odd, {}, 0, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(filter.Run(odd, 0, 0));
}

TEST(NoiseFilterExport, LeavesTheStoreAloneWhenRefused) {
    const HostImage image(kWidth, kHeight, 1), gray(kWidth, kHeight, 8);
    Store s;
    Add(s, AddLine(s, {}), 0, 0, 1, 1);
    EXPECT_EQ(Noise_Filter1(image.Record(), &s, 9, 9, 2), 1);
    EXPECT_EQ(Noise_Filter1(gray.Record(), &s, 9, 9, 0), 0);
    EXPECT_EQ(Noise_Filter1(image.Record(), nullptr, 9, 9, 0), 0);
    EXPECT_EQ(s.liveCount, 3u);
    ComponentStore unallocated{};
    EXPECT_EQ(Noise_Filter1(image.Record(), &unallocated, 9, 9, 0), 1);
}

}  // namespace
}  // namespace tavrix
