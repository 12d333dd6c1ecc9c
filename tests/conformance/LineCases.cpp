// SPDX-License-Identifier: MIT
//
// Text lines from stores that a host has made: what drawn pictures hardly ever hold.
#include <algorithm>

#include "Cases.h"
#include "GroupingCase.h"

namespace tavrix::conformance {
namespace {

constexpr GroupingOptions kOneLine{0, 0, 0};
constexpr GroupingOptions kAllLines{TAVRIX_SELECT_ALL_LINES, 0, 0};
constexpr GroupingOptions kJoined{TAVRIX_SELECT_JOIN_PIECES, 0, 0};
constexpr GroupingOptions kAllSplit{TAVRIX_SELECT_ALL_LINES, 0, 1};
constexpr std::uint32_t kFromLeft = 0x25;
constexpr int kTextLines = 3;

// A row of like components.
struct Row {
    int left, bottom, count, w, h, pitch;
    int laterHeight = 0;  // of the second half of the components, if another
    int rise = 0;         // rows from each component to the next
};

std::vector<Box> BoxesOf(const Row& row) {
    std::vector<Box> boxes;
    for (int i = 0; i < row.count; ++i) {
        const bool later = row.laterHeight != 0 && 2 * i >= row.count;
        boxes.push_back(
            {row.left + i * row.pitch, row.bottom + i * row.rise, row.w, later ? row.laterHeight : row.h});
    }
    return boxes;
}

// Two lines of a page of 1000 x 600, each for the other: in which ways one is the better true line.
const struct {
    const char* name;
    Row first, second;
} kMatches[] = {
    {"not big", {600, 300, 5, 40, 60, 50}, {10, 285, 12, 15, 25, 80}},
    {"big enough", {600, 300, 5, 40, 60, 50}, {10, 285, 12, 15, 28, 80}},
    {"short label", {100, 300, 20, 20, 40, 40}, {300, 300, 5, 30, 60, 40}},
    {"no short label", {100, 300, 20, 20, 40, 40}, {300, 300, 10, 30, 60, 40}},
    {"wide label", {100, 300, 12, 16, 40, 18}, {150, 300, 5, 30, 60, 50}},
    {"nearly as wide, taller", {100, 300, 12, 16, 40, 18}, {150, 300, 5, 30, 60, 40}},
    {"nearly as wide, no taller", {100, 300, 12, 24, 60, 25}, {150, 300, 5, 30, 60, 50}},
    {"display type", {0, 200, 40, 8, 15, 20, 0, 3}, {300, 10, 2, 100, 160, 120}},
    {"large display type", {0, 200, 40, 8, 15, 20, 0, 4}, {300, 10, 2, 120, 250, 122}},
    {"display type on the left", {0, 200, 40, 8, 15, 20, 0, 4}, {100, 10, 3, 120, 250, 122}},
    {"short best, larger type", {600, 300, 5, 40, 60, 50}, {100, 10, 12, 20, 50, 50}},
    {"short best, in the middle", {600, 300, 5, 40, 60, 50}, {100, 285, 12, 15, 28, 50}},
    {"short best, at the bottom", {600, 300, 5, 40, 60, 50}, {100, 10, 12, 15, 28, 50}},
    {"short best, at the top", {600, 300, 5, 40, 60, 50}, {100, 560, 12, 15, 28, 50}},
    {"short best, like height", {600, 300, 5, 40, 30, 50}, {100, 560, 12, 15, 28, 50}},
    {"right of large type", {0, 300, 12, 20, 35, 25}, {400, 300, 12, 24, 60, 25}},
    {"right of small type", {0, 300, 12, 20, 33, 25}, {400, 270, 12, 24, 60, 25}},
    {"right part, farther", {100, 200, 12, 20, 40, 25}, {350, 100, 12, 24, 60, 25}},
    {"right part, nearer", {100, 200, 12, 20, 40, 25}, {350, 300, 12, 24, 60, 25}},
    {"smaller left, larger right", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 33, 30, 57}},
    {"smaller left, farther", {100, 200, 14, 20, 40, 30}, {150, 10, 14, 24, 33, 30, 57}},
    {"smaller left, far larger right", {100, 280, 14, 20, 40, 30}, {150, 10, 14, 24, 33, 30, 70}},
    {"smaller left, right too small", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 33, 30, 50}},
    {"far smaller left", {100, 200, 14, 20, 40, 30}, {150, 280, 14, 24, 30, 30, 60}},
    {"alike, nearer", {100, 200, 12, 20, 40, 25}, {200, 280, 12, 20, 40, 25}},
    {"alike, farther", {100, 200, 12, 20, 40, 25}, {200, 10, 12, 20, 40, 25}},
    {"alike, on the right", {100, 200, 12, 20, 40, 25}, {350, 280, 12, 20, 40, 25}},
    {"alike, smaller right", {100, 200, 14, 20, 40, 25}, {200, 280, 14, 20, 40, 25, 33}},
    {"alike, larger right", {100, 200, 14, 20, 40, 25}, {200, 280, 14, 20, 40, 25, 50}},
    {"few on the right", {100, 200, 14, 20, 45, 60, 35}, {510, 280, 8, 20, 43, 40}},
    {"few on the left", {100, 200, 14, 20, 45, 60, 35}, {480, 280, 8, 20, 43, 40}},
    {"wholly left", {600, 300, 12, 20, 40, 25}, {100, 10, 12, 20, 36, 25}},
    {"rising", {100, 200, 12, 20, 40, 25}, {200, 280, 12, 20, 40, 25, 0, 20}},
    {"joined", {100, 200, 3, 20, 30, 30}, {230, 214, 3, 20, 30, 30}},
    {"not joined", {100, 200, 3, 20, 30, 30}, {230, 260, 3, 20, 30, 30}},
    {"joined to the left", {400, 200, 3, 20, 30, 30}, {230, 214, 3, 20, 30, 30}},
};

void AddMatches(Cases& cases) {
    const SheetPointer page = BlankSheet(1000, 600);
    for (const auto& match : kMatches) {
        for (const bool apart : {false, true}) {
            const auto fill = [=](HostStore& store) {
                // Lines are built from the first line alone; the others come to the tournament as they are.
                store.AddLine(store.AddBlock(), {{500, 590, 10, 10}});
                ComponentNode* const block = store.AddBlock();
                store.AddLine(block, BoxesOf(match.first));
                store.AddLine(apart ? store.AddBlock() : block, BoxesOf(match.second));
            };
            const std::string name = std::string("match, ") + match.name + (apart ? ", apart" : "");
            AddStoreGrouping(cases, name, page, fill, kTextLines, apart ? kJoined : kOneLine, 0);
            AddStoreGrouping(
                cases, name + ", turned", page,
                [=](HostStore& store) {
                    store.AddLine(store.AddBlock(), {{500, 590, 10, 10}});
                    ComponentNode* const block = store.AddBlock();
                    store.AddLine(block, BoxesOf(match.second));
                    store.AddLine(apart ? store.AddBlock() : block, BoxesOf(match.first));
                },
                kTextLines, kOneLine, apart ? kFromLeft : 0);
        }
    }
    // A stranger of nearly the page's height on the right of a line.
    AddStoreGrouping(
        cases, "stranger", BlankSheet(1000, 250),
        [](HostStore& store) {
            std::vector<Box> boxes = BoxesOf({100, 100, 12, 20, 30, 25});
            boxes.push_back({700, 10, 160, 210});
            store.AddLine(store.AddBlock(), {{500, 239, 10, 10}});
            store.AddLine(store.AddBlock(), boxes);
        },
        kTextLines, kOneLine, 0);
}

// One more component in a line of letters of 20 x 40, for a page of 1000 columns where such type is very
// large.
void AddStrangers(Cases& cases) {
    const Box strangers[] = {{600, 50, 161, 20}, {600, 50, 160, 20}, {600, 50, 120, 20}, {440, 20, 8, 73},
                             {440, 20, 8, 58},   {461, 20, 10, 61},  {461, 20, 8, 52},   {440, 41, 10, 61},
                             {440, 0, 30, 73},   {440, 0, 30, 60},   {560, 0, 30, 80},   {0, 20, 30, 40},
                             {0, 20, 31, 40},    {60, 20, 8, 58},    {85, 45, 8, 58},    {40, 20, 8, 58}};
    int number = 0;
    for (const Box& stranger : strangers) {
        for (const int height : {130, 119}) {
            for (const int letters : {13, 1}) {
                const std::string name = "stranger " + std::to_string(++number);
                const auto fill = [=](HostStore& store) {
                    std::vector<Box> boxes = BoxesOf({100, 20, letters, 20, 40, 26});
                    boxes.push_back(stranger);
                    if (letters == 1) boxes[0] = {stranger.left + stranger.width + 3, 20, 20, 40};
                    store.AddLine(store.AddBlock(), boxes);
                };
                AddStoreGrouping(cases, name, BlankSheet(1000, height), fill, kTextLines,
                                 letters == 1 ? kAllLines : kOneLine, 0);
            }
        }
    }
}

// Marks near the right edge of large type.
void AddEdgeMarks(Cases& cases) {
    for (const int height : {60, 70}) {
        for (const int part : {0, 1, 2}) {
            const auto fill = [=](HostStore& store) {
                std::vector<Box> boxes = BoxesOf({0, 0, 12, 15, 20, 20});
                const std::vector<Box> marks[] = {
                    {{800, 0, 40, 50}, {850, 0, 40, 42}, {900, 0, 43, 13}, {950, 0, 42, 12}},
                    {{876, 0, 14, 26}, {900, 0, 20, 28}, {940, 0, 42, 12}},
                    {{810, 0, 40, 43}, {860, 0, 43, 12}, {920, 0, 19, 27}}};
                boxes.insert(boxes.end(), marks[part].begin(), marks[part].end());
                store.AddLine(store.AddBlock(), boxes);
            };
            AddStoreGrouping(cases, "edge marks " + std::to_string(part), BlankSheet(1000, height), fill,
                             kTextLines, kAllLines, 0);
        }
    }
}

// Strokes and thin bridges under boxes that partly hold no ink or reach out of the picture.
Page DrawBridges(std::uint32_t seed, bool hasInk) {
    Draws draw(seed);
    Page page(draw.Between(60, 200), 50);
    for (int i = 0; i < 30 && hasInk; ++i) {
        const bool bridge = i % 3 == 0;
        const int x = draw.Between(0, 190);
        const int y = draw.Between(0, 45);
        const int w = bridge ? draw.Between(8, 60) : draw.Between(2, 6);
        page.Fill(x, y, w, bridge ? draw.Between(1, 3) : draw.Between(10, 40), 0);
    }
    return page;
}

void AddCuts(Cases& cases) {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        const bool hasInk = seed % 8 != 0;
        const auto page = std::make_shared<Sheet>("bridges " + std::to_string(seed),
                                                  [=] { return DrawBridges(seed, hasInk); });
        const auto fill = [=](HostStore& store) {
            Draws draw(seed + 1000);
            ComponentNode* const first = store.AddBlock();
            store.AddLine(first, {{20, 30, 10, 10}});
            ComponentNode* const block = store.AddBlock();
            for (int line = 0; line < 3; ++line) {
                std::vector<Box> boxes;
                int x = draw.Between(-5, 20);
                for (int i = draw.Between(1, 6); i > 0; --i) {
                    const int wide = draw.Between(2, draw.OneIn(2) ? 12 : 120);
                    const int y = draw.Between(-5, 20);
                    boxes.push_back({x, y, wide, draw.Between(8, 45)});
                    x += wide + draw.Between(1, 12);
                }
                store.AddLine(block, boxes);
            }
            if (seed % 10 == 0) store.LeaveFree(static_cast<int>(seed / 10));
        };
        AddStoreGrouping(cases, "cuts " + std::to_string(seed), page, fill, kTextLines, kAllSplit, 0);
    }
}

}  // namespace

void AddLineCases(Cases& cases) {
    AddMatches(cases);
    AddStrangers(cases);
    AddEdgeMarks(cases);
    AddCuts(cases);
}

}  // namespace tavrix::conformance
