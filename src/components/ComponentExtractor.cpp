// SPDX-License-Identifier: MIT
#include "components/ComponentExtractor.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "image/Rect.h"
#include "platform/Guarded.h"

namespace tavrix {
namespace {

constexpr int kWordBits = 64;

// Up to 64 pixels, the leftmost in the highest bit, 1 for black. Pixels from count on are white.
std::uint64_t BlackBits(const std::uint8_t* bytes, int count = kWordBits) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, static_cast<std::size_t>(count + 7) / 8);
    const std::uint64_t black = ~__builtin_bswap64(word);
    return count == kWordBits ? black : black & ~(~std::uint64_t{0} >> count);
}

// Writes the columns at which a row changes colour, starting from white: in turn the first column of a
// run and the first one behind it. Fills from edgesEnd downwards and returns the first; their count is
// even.
std::uint16_t* FindEdges(const std::uint8_t* row, int width, std::uint16_t* edgesEnd) {
    std::uint16_t* edge = edgesEnd;
    const int words = width / kWordBits;
    const int tail = width % kWordBits;
    std::uint64_t black = tail != 0 ? BlackBits(row + words * 8, tail) : 0;
    // The tail's last black pixel has a white one behind it inside its word.
    for (int i = words; i >= 0; --i) {
        const std::uint64_t left = i > 0 ? BlackBits(row + (i - 1) * 8) : 0;
        const int last = i * kWordBits + kWordBits - 1;
        for (std::uint64_t changes = black ^ (black >> 1 | left << 63); changes != 0;
             changes &= changes - 1) {
            *--edge = static_cast<std::uint16_t>(last - std::countr_zero(changes));
        }
        black = left;
    }
    return edge;
}

// A run of black pixels in one row, with the label of its component.
struct Run {
    std::uint16_t firstX;
    std::uint16_t lastX;  // inclusive
    std::uint32_t label;
};

// Ends the runs of a row; lies right of everything.
constexpr Run kEndOfRow{0xFFFF, 0xFFFF, 0};

// A component in the making. Labels form a union-find forest, so that a merge need not visit the runs;
// only the roots hold a component. The node's rectangle and count are written when the label goes.
struct Label {
    ComponentNode* node;
    std::uint32_t parent;  // own index in a root
    std::uint32_t pixelCount;
    Rect box;
};

class Extraction {
  public:
    Extraction(ComponentStore& target, int width)
        : store(target),
          edges(width + 2),
          previous((width + 1) / 2 + 1, kEndOfRow),
          current(previous.size()),
          labels(kSpareLabels + 3 * previous.size()),
          spareLabels(labels.size()) {}

    void SetLine(ComponentNode* parent) { line = parent; }

    // row stays readable until the next row or Finish.
    void AddRow(const std::uint8_t* row, int width, std::int16_t y) {
        // Each run of a row like the one before touches its own predecessor and nothing else.
        if (canRepeat && std::memcmp(row, previousRow, static_cast<std::size_t>(width + 7) / 8) == 0) {
            ++repeats;
            previousY = y;
            return;
        }
        AddRepeats();
        if (labelCount > 2 * previousCount + kSpareLabels) DropClosedLabels();
        const std::uint16_t* const end = edges.data() + edges.size();
        const std::uint16_t* edge = FindEdges(row, width, edges.data() + edges.size());
        const auto runCount = static_cast<std::size_t>(end - edge) / 2;
        const Run* touching = previous.data();
        Run* added = current.data();
        for (; edge != end; edge += 2) {
            const std::uint32_t label = LabelOfRun(edge[0], edge[1], y, touching);
            if (label == kNoLabel) continue;
            *added++ = {edge[0], static_cast<std::uint16_t>(edge[1] - 1), label};
        }
        previousCount = static_cast<std::size_t>(added - current.data());
        *added = kEndOfRow;
        current.swap(previous);
        previousRow = row;
        previousY = y;
        canRepeat = previousCount == runCount;  // else a dropped run may find room next time
    }

    void Finish() {
        AddRepeats();
        for (std::uint32_t i = 0; i < labelCount; ++i) {
            if (labels[i].parent == i) WriteNode(labels[i]);
        }
    }

  private:
    static constexpr std::size_t kSpareLabels = 1024;
    static constexpr std::uint32_t kNoLabel = 0xFFFFFFFF;

    // The label of a run start .. end - 1 in row y. touching is the first run of the previous row that may
    // touch this run or one right of it.
    std::uint32_t LabelOfRun(int start, int end, std::int16_t y, const Run*& touching) {
        while (touching->lastX + 1 < start) ++touching;
        if (touching->firstX > end) return StartComponent(start, end, y);
        std::uint32_t label = RootOf(touching->label);
        while (touching->lastX < end - 1) {
            ++touching;
            if (touching->firstX > end) break;
            const std::uint32_t other = RootOf(touching->label);
            if (other != label) label = Merge(label, other);
        }
        if (touching->lastX == end - 1) ++touching;
        Label& component = labels[label];
        component.box.y1 = y;
        component.box.x0 = std::min(component.box.x0, static_cast<std::int16_t>(start));
        component.box.x1 = std::max(component.box.x1, static_cast<std::int16_t>(end - 1));
        component.pixelCount += static_cast<std::uint32_t>(end - start);
        return label;
    }

    // Extends the previous row's runs over the rows like it that followed.
    void AddRepeats() {
        if (repeats == 0) return;
        for (std::size_t i = 0; i < previousCount; ++i) {
            Label& component = labels[RootOf(previous[i].label)];
            component.pixelCount += repeats * (previous[i].lastX - previous[i].firstX + 1u);
            component.box.y1 = previousY;
        }
        repeats = 0;
    }

    std::uint32_t StartComponent(int start, int end, std::int16_t y) {
        const Rect box{static_cast<std::int16_t>(start), y, static_cast<std::int16_t>(end - 1), y};
        ComponentNode* node = store::InsertComponent(store, line, tail, nullptr, box);
        if (node == nullptr) return kNoLabel;
        tail = node;
        labels[labelCount] = {node, labelCount, static_cast<std::uint32_t>(end - start), box};
        return labelCount++;
    }

    std::uint32_t RootOf(std::uint32_t label) {
        while (labels[label].parent != label) {
            std::uint32_t& parent = labels[label].parent;
            label = parent = labels[parent].parent;
        }
        return label;
    }

    // The node of the absorbed component is free at once, since a later component may need it.
    std::uint32_t Merge(std::uint32_t keeperLabel, std::uint32_t otherLabel) {
        if (labels[otherLabel].box.y0 < labels[keeperLabel].box.y0) std::swap(keeperLabel, otherLabel);
        Label& keeper = labels[keeperLabel];
        Label& other = labels[otherLabel];
        keeper.box.x0 = std::min(keeper.box.x0, other.box.x0);
        keeper.box.x1 = std::max(keeper.box.x1, other.box.x1);
        keeper.pixelCount += other.pixelCount;
        other.parent = keeperLabel;
        WriteNode(other);
        if (tail == other.node) tail = other.node->prev;
        store::DeleteComponent(store, other.node);
        return keeperLabel;
    }

    static void WriteNode(const Label& label) {
        SetRect(*label.node, label.box);
        label.node->pixelCount = label.pixelCount;
    }

    // Keeps the labels of the previous row's runs alone: no other component can grow any more.
    void DropClosedLabels() {
        for (std::size_t i = 0; i < previousCount; ++i) previous[i].label = RootOf(previous[i].label);
        std::uint32_t kept = 0;
        for (std::size_t i = 0; i < previousCount; ++i) {
            Label& old = labels[previous[i].label];
            if (old.node != nullptr) {
                spareLabels[kept] = old;
                spareLabels[kept].parent = kept;
                old.node = nullptr;
                old.pixelCount = kept++;  // its new index
            }
            previous[i].label = old.pixelCount;
        }
        for (std::uint32_t i = 0; i < labelCount; ++i) {
            if (labels[i].parent == i && labels[i].node != nullptr) WriteNode(labels[i]);
        }
        labels.swap(spareLabels);
        labelCount = kept;
    }

    ComponentStore& store;
    ComponentNode* line = nullptr;
    ComponentNode* tail = nullptr;  // last component of the line
    std::vector<std::uint16_t> edges;
    std::vector<Run> previous;  // runs of the row before, left to right, and kEndOfRow
    std::vector<Run> current;
    std::size_t previousCount = 0;
    const std::uint8_t* previousRow = nullptr;
    std::int16_t previousY = 0;
    std::uint32_t repeats = 0;  // rows like previousRow that previous does not count yet
    bool canRepeat = false;
    std::vector<Label> labels;
    std::vector<Label> spareLabels;
    std::uint32_t labelCount = 0;
};

// low and high are a component's sides along one axis, lineLow and lineHigh its line's.
void Grow(std::int16_t& low, std::int16_t& high, std::int32_t amount, std::int16_t lineLow,
          std::int16_t lineHigh) {
    low = static_cast<std::int16_t>(std::max(static_cast<std::int16_t>(low - amount), std::int16_t{0}));
    high = static_cast<std::int16_t>(high + amount);
    const auto size = static_cast<std::int16_t>(lineHigh - lineLow + 1);
    if (high >= size) high = static_cast<std::int16_t>(size - 1);
}

}  // namespace

bool ComponentExtractor::Run(ComponentStore& store) {
    return Guarded(false, [&] {
        Extraction extraction(store, width);
        ComponentNode* block = store::InsertBlock(store, nullptr, nullptr, {});
        if (block == nullptr) return false;
        ComponentNode* line = store::InsertLine(store, block, nullptr, nullptr, {});
        if (line == nullptr) return false;
        extraction.SetLine(line);
        for (int y = 0; y < height; ++y)
            extraction.AddRow(image->Row(y), width, static_cast<std::int16_t>(y));
        extraction.Finish();
        line->right = static_cast<std::int16_t>(width - 1);
        line->top = static_cast<std::int16_t>(height - 1);
        return true;
    });
}

bool ComponentExtractor::RunAndGrow(ComponentStore& store, std::int32_t growX, std::int32_t growY) {
    Run(store);
    const auto stepX = static_cast<std::int16_t>(growX), stepY = static_cast<std::int16_t>(growY);
    store::ForEachLine(store, [&](const ComponentNode* line) {
        store::ForEachChild(*line, [&](ComponentNode* node) {
            Grow(node->left, node->right, stepX, line->left, line->right);
            Grow(node->bottom, node->top, stepY, line->bottom, line->top);
        });
    });
    return true;
}

}  // namespace tavrix
