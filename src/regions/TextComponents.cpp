// SPDX-License-Identifier: MIT
#include "regions/TextComponents.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "binarize/MaskKernels.h"
#include "regions/RegionKernels.h"

namespace tavrix {
namespace {

constexpr int kMinRuns = 5;           // of a component
constexpr int kMinArea = 33;          // pixels
constexpr int kMinWideHeight = 10;    // rows, exceeded by a wide component
constexpr int kFirstLight = 128;      // gray level from which a pixel is light
constexpr double kLightFactor = 1.1;  // mostly dark: light pixels times this are fewer than dark ones

constexpr int kMaxGroups = 64;
constexpr int kGroupGap = 20;  // rows between neighbouring centres of a group, at most

constexpr int kColumnStep = 2;  // the mask's columns that count
constexpr int kNone = -1;

// A horizontal run of foreground, in columns that count, inclusive.
struct RunSegment {
    std::int16_t x0, x1, y;
    int next;  // index of the component's next run, kNone at the end
};

struct LabelledComponent {
    int runs;               // 0 when merged into another component
    int firstRun, lastRun;  // indices into all runs
};

// Columns of one row that carry a label, the index of a component.
struct LabelledSpan {
    int x0, x1, label;
};

// Components of the runs that touch from row to row, columns above one another: labelled in one pass, with
// labels found equal joined at once (after Rosenfeld and Pfaltz, 1966, and Galler and Fischer, 1964). Where a
// run joins two components, the one it touches first takes over the other, whose runs follow its own; the
// column of the junction then carries no label for the row after it.
class RunLabeller {
  public:
    // Runs come row by row, from left to right.
    void AddRun(int x0, int x1, int y) {
        while (above < previous.size() && previous[above].x1 < x0) ++above;
        int label = kNone, start = x0;
        for (std::size_t i = above; i < previous.size() && previous[i].x0 <= x1; ++i) {
            const int other = Find(previous[i].label);
            if (label == kNone) {
                label = other;
            } else if (other != label) {
                Merge(other, label);
                const int junction = std::max(previous[i].x0, x0);
                AddSpan(start, junction - 1, label);
                start = junction + 1;
            }
        }
        if (label == kNone) {
            label = static_cast<int>(parent.size());
            parent.push_back(label);
            components.push_back({0, kNone, kNone});
        }
        AddSpan(start, x1, label);
        Append(components[label], x0, x1, y);
    }
    void EndRow() {
        previous.swap(current);
        current.clear();
        above = 0;
    }

    std::vector<RunSegment> runs;
    std::vector<LabelledComponent> components;  // in order of creation

  private:
    int Find(int label) {
        while (parent[label] != label) label = parent[label] = parent[parent[label]];
        return label;
    }
    void Merge(int from, int into) {
        parent[from] = into;
        LabelledComponent &source = components[from], &target = components[into];
        target.runs += source.runs;
        runs[target.lastRun].next = source.firstRun;
        target.lastRun = source.lastRun;
        source.runs = 0;
    }
    void AddSpan(int x0, int x1, int label) {
        if (x0 <= x1) current.push_back({x0, x1, label});
    }
    void Append(LabelledComponent& component, int x0, int x1, int y) {
        const int run = static_cast<int>(runs.size());
        const auto narrow = [](int value) { return static_cast<std::int16_t>(value); };
        runs.push_back({narrow(x0), narrow(x1), narrow(y), kNone});
        (component.lastRun == kNone ? component.firstRun : runs[component.lastRun].next) = run;
        component.lastRun = run;
        ++component.runs;
    }

    std::vector<int> parent;  // of labels that were merged; a component's own label is its index
    std::vector<LabelledSpan> previous, current;
    std::size_t above = 0;  // first span of the previous row that the next run can touch
};

// Calls found(x0, x1) for each run of ones of the bits 0..count-1, least significant first. Bits from
// count on are 0, and a whole word of zeros follows.
template <class Found>
void ForEachRun(const std::uint64_t* words, int count, const Found& found) {
    constexpr int kWordBits = 64;
    int word = 0, base = 0;
    std::uint64_t bits = words[0];
    while (base < count) {
        if (bits == 0) {
            bits = words[++word];
            base += kWordBits;
            continue;
        }
        const int x0 = base + std::countr_zero(bits);
        // Ones below the run's end turn into the run itself.
        std::uint64_t gaps = ~(bits | (bits - 1));
        while (gaps == 0) {
            base += kWordBits;
            gaps = ~words[++word];
        }
        const int end = std::countr_zero(gaps);
        found(x0, base + end - 1);
        bits = words[word] & (~std::uint64_t{0} << end);
    }
}

// Running sums are of single precision, in the order of the runs.
ComponentRecord Measure(const std::vector<RunSegment>& runs, const LabelledComponent& component) {
    float area = 0, sumX = 0, sumY = 0;
    ComponentRecord record{};
    for (int i = component.firstRun; i != kNone; i = runs[i].next) {
        const RunSegment& run = runs[i];
        const int x0 = kColumnStep * run.x0, x1 = kColumnStep * run.x1, length = x1 - x0 + 1;
        area += static_cast<float>(length);
        sumX += static_cast<float>(std::int64_t{x0 + x1} * length / 2);
        sumY += static_cast<float>(std::int64_t{length} * run.y);
        const Rect box{static_cast<std::int16_t>(x0), run.y, static_cast<std::int16_t>(x1), run.y};
        record.box = i == component.firstRun ? box : Union(record.box, box);
    }
    const auto centre = [&](float sum) { return static_cast<int>(static_cast<double>(sum / area) + 0.5); };
    record.centreX = centre(sumX);
    record.centreY = centre(sumY);
    record.area = static_cast<int>(area);
    return record;
}

bool IsMostlyDark(const ConstPlane& gray, const Rect& box) {
    const auto countFrom = platform::KernelsOf<MaskKernels>().countFrom;
    std::int64_t light = 0;
    for (int y = box.y0; y <= box.y1; ++y) light += countFrom(gray.Row(y) + box.x0, box.Width(), kFirstLight);
    return static_cast<double>(light) * kLightFactor < static_cast<double>(box.Area() - light);
}

// Sorts records by centreY, splits them where neighbours are far apart, and sorts each group by centreX.
// Beyond the last possible group everything belongs to it.
void SortIntoGroups(std::vector<ComponentRecord>& records) {
    std::stable_sort(records.begin(), records.end(),
                     [](const auto& a, const auto& b) { return a.centreY < b.centreY; });
    int group = 0;
    for (std::size_t i = 1; i < records.size(); ++i) {
        const bool isFar = records[i].centreY - records[i - 1].centreY > kGroupGap;
        if (isFar && group + 1 < kMaxGroups) ++group;
        records[i].group = group;
    }
    std::stable_sort(records.begin(), records.end(), [](const auto& a, const auto& b) {
        return a.group != b.group ? a.group < b.group : a.centreX < b.centreX;
    });
}

RunLabeller LabelRuns(const ConstPlane& mask) {
    const int columns = mask.rowBytes / kColumnStep;
    std::vector<std::uint64_t> words(static_cast<std::size_t>(columns) / 64 + 2);
    const auto evenZeroBits = platform::KernelsOf<RegionKernels>().evenZeroBits;
    RunLabeller labeller;
    for (int y = 0; y < mask.height; ++y) {
        evenZeroBits(mask.Row(y), columns, words.data());
        ForEachRun(words.data(), columns, [&](int x0, int x1) { labeller.AddRun(x0, x1, y); });
        labeller.EndRow();
    }
    return labeller;
}

}  // namespace

std::vector<ComponentRecord> FindTextComponents(const ConstPlane& mask, const ConstPlane& gray,
                                                bool wideToo) {
    const RunLabeller labelled = LabelRuns(mask);
    std::vector<ComponentRecord> records;
    for (const LabelledComponent& component : labelled.components) {
        if (component.runs < kMinRuns) continue;
        const ComponentRecord record = Measure(labelled.runs, component);
        const int w = record.box.x1 - record.box.x0, h = record.box.y1 - record.box.y0;
        const bool wide = w >= mask.rowBytes / 2;
        const bool accepted = wide ? wideToo && component.runs > kMinRuns && record.area > kMinArea &&
                                         h > kMinWideHeight && IsMostlyDark(gray, record.box)
                                   : record.area >= kMinArea && h < 2 * mask.height / 3;
        if (accepted) records.push_back(record);
    }
    SortIntoGroups(records);
    return records;
}

}  // namespace tavrix
