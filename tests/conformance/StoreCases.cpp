// SPDX-License-Identifier: MIT
//
// Grouping and noise filters on stores of random boxes that a host has made.
#include <algorithm>
#include <tuple>

#include "Cases.h"
#include "GroupingCase.h"

namespace tavrix::conformance {
namespace {

struct Regime {
    const char* name;
    int width, height, count, minSide, maxSide;
    int pitch;  // rows between base lines, 0: anywhere
};

const Regime kRegimes[] = {{"few", 120, 90, 25, 2, 30, 0},         {"dots", 220, 220, 300, 2, 6, 0},
                           {"print", 900, 300, 300, 3, 28, 40},    {"type", 1400, 160, 160, 12, 60, 75},
                           {"narrow", 60, 3000, 300, 2, 25, 0},    {"wide", 4000, 60, 300, 2, 40, 30},
                           {"mixed", 700, 700, 300, 2, 90, 0},     {"fragments", 800, 250, 300, 2, 22, 50},
                           {"large", 1500, 500, 60, 20, 120, 140}, {"rules", 500, 400, 40, 1, 400, 0}};

std::vector<Box> RandomBoxes(const Regime& regime, Draws& draw) {
    std::vector<Box> boxes;
    for (int i = 0; i < regime.count; ++i) {
        // Most sides are small.
        const int w = draw.Between(regime.minSide, draw.Between(regime.minSide, regime.maxSide));
        const int h = draw.Between(regime.minSide, draw.Between(regime.minSide, regime.maxSide));
        const int x = draw.Between(0, std::max(regime.width - w, 0));
        int y = draw.Between(0, std::max(regime.height - h, 0));
        if (regime.pitch != 0) {
            y = std::min(y / regime.pitch * regime.pitch + draw.Between(0, 12),
                         std::max(regime.height - h, 0));
        }
        boxes.push_back({x, y, w, h});
    }
    return boxes;
}

// The order of a scan. Boxes at one place, for which that has no rule, come in the order that they had when
// the list was made; it depends on nothing but the boxes.
bool DoesComeFirst(const Box& a, const Box& b) {
    const auto among = [](const Box& box) { return (50 * box.width + 19 * box.height) % 83; };
    return std::tuple(a.bottom, a.left, among(a)) < std::tuple(b.bottom, b.left, among(b));
}

// The boxes of a regime, over one line or a few lines and blocks, in the order of a scan or in none.
void Fill(HostStore& store, const Regime& regime, std::uint32_t seed) {
    Draws draw(seed);
    std::vector<Box> boxes = RandomBoxes(regime, draw);
    if (!draw.OneIn(4)) std::sort(boxes.begin(), boxes.end(), DoesComeFirst);
    const int lines = seed % 4 == 0 ? 3 : 1;
    const int blocks = seed % 5 == 0 ? 3 : 1;
    const auto count = static_cast<int>(boxes.size());
    for (int b = 0; b < blocks; ++b) {
        ComponentNode* const block = store.AddBlock();
        for (int l = 0; l < lines; ++l) {
            const int part = b * lines + l;
            const int parts = blocks * lines;
            store.AddLine(block,
                          {boxes.begin() + part * count / parts, boxes.begin() + (part + 1) * count / parts});
        }
    }
    if (seed % 7 == 0) store.LeaveFree(static_cast<int>(seed));
}

void AddRandomStores(Cases& cases) {
    const GroupingOptions options[] = {{0, 0, 0},
                                       {TAVRIX_SELECT_ALL_LINES, 0, 1},
                                       {TAVRIX_SELECT_JOIN_PIECES, 0, 0},
                                       {TAVRIX_SELECT_JOIN_PIECES | TAVRIX_SELECT_ALL_LINES, 0, 0x40}};
    std::uint32_t seed = 0;
    for (int round = 0; round < 6; ++round) {
        for (const Regime& regime : kRegimes) {
            ++seed;
            const SheetPointer page = BlankSheet(regime.width, regime.height);
            const std::string name = std::string(regime.name) + " " + std::to_string(seed);
            const auto fill = [&regime, seed](HostStore& store) { Fill(store, regime, seed); };
            for (const int mode : {0, 1, 3}) {
                AddStoreGrouping(cases, name, page, fill, mode, options[round % 4], seed % 2 != 0 ? 0x20 : 0);
            }
        }
    }
    for (const int mode : {0, 1, 3}) {
        const SheetPointer page = BlankSheet(60, 40);
        AddStoreGrouping(
            cases, "no block", page, [](HostStore&) {}, mode, options[0], 0);
        AddStoreGrouping(
            cases, "no line", page, [](HostStore& store) { store.AddBlock(); }, mode, options[0], 0);
        AddStoreGrouping(
            cases, "no component", page,
            [](HostStore& store) {
                ComponentNode* const block = store.AddBlock();
                store.AddLine(block, {});
                block->firstChild->right = 30;
                block->firstChild->top = 20;
            },
            mode, options[0], 0);
    }
}

void AddNoiseCase(Cases& cases, const std::string& name, int width, int height, int mode,
                  std::function<void(HostStore&)> fill) {
    const SheetPointer page = BlankSheet(width, height);
    cases.push_back(
        {"Noise_Filter1 mode " + std::to_string(mode) + " of a store, " + name + ", " + page->name,
         [=, fill = std::move(fill)](Library& library, Outcome& outcome) {
             const auto filter = TAVRIX_FIND(library, Noise_Filter1);
             const Picture picture(page->Drawn(), 1);
             HostStore store;
             fill(store);
             outcome.AddNumbers("returned", {filter(picture.record, &store.header, 3, 4, mode)});
             AddStore(outcome, "store", store);
         }});
}

void AddNoise(Cases& cases) {
    for (const int mode : {0, 1}) {
        std::uint32_t seed = 100;
        for (const Regime& regime : kRegimes) {
            ++seed;
            AddNoiseCase(cases, regime.name, regime.width, regime.height, mode,
                         [&regime, seed](HostStore& store) { Fill(store, regime, seed); });
        }
        // Strokes from edge to edge near the sides and in the middle, and lines that lose all they hold.
        AddNoiseCase(cases, "edge to edge", 200, 90, mode, [](HostStore& store) {
            ComponentNode* const block = store.AddBlock();
            store.AddLine(block, {{10, 0, 30, 90}, {100, 0, 30, 90}, {165, 0, 30, 90}, {60, 20, 12, 12}});
            store.AddLine(block, {{20, 0, 30, 90}});
            store.AddLine(block, {{20, 0, 2, 2}, {30, 5, 1, 1}});
            store.AddLine(store.AddBlock(), {{5, 5, 2, 1}});
            store.AddLine(store.AddBlock(), {});
        });
    }
}

}  // namespace

void AddStoreCases(Cases& cases) {
    AddRandomStores(cases);
    AddNoise(cases);
}

}  // namespace tavrix::conformance
