// SPDX-License-Identifier: MIT
#include "regions/TextComponents.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <numeric>

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

// Runs of foreground above one another, alike, in columns that count, inclusive.
struct RunSegment {
    std::int16_t x0, x1, y, rows;
    int next;  // index of the component's next segment, kNone at the end
};

struct LabelledComponent {
    int runs;               // 0 when merged into another component
    int firstRun, lastRun;  // indices into all segments
    std::uint32_t number;   // in order of creation
    bool isHopeless;        // never to be text: its runs are dropped
};

// Columns of one row that carry a label, the index of a component.
struct LabelledSpan {
    int x0, x1, label;
};

// Components of the runs that touch from row to row, columns above one another: labelled in one pass, with
// labels found equal joined at once (after Rosenfeld and Pfaltz, 1966, and Galler and Fischer, 1964). Where a
// run joins two components, the one it touches first takes over the other, whose runs follow its own; the
// column of the junction then carries no label for the row after it.
//
// Runs and labels are kept while their component grows: whenever there are half as many again, those that can
// grow no more are handed to `closed` and go.
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
            components.push_back({0, kNone, kNone, created++, false});
        }
        AddSpan(start, x1, label);
        Append(components[label], x0, x1, y);
    }
    // closed(runs, component) for components to hand over; it may call another one hopeless by
    // isHopeless(runs, component).
    template <class Closed, class IsHopeless>
    void EndRow(const Closed& closed, const IsHopeless& isHopeless) {
        previous.swap(current);
        current.clear();
        above = 0;
        if (runs.size() + components.size() >= limit) CloseComponents(closed, isHopeless);
    }
    template <class Closed>
    void Finish(const Closed& closed) {
        for (const LabelledComponent& component : components) {
            if (component.runs != 0) closed(runs, component);
        }
    }

  private:
    int Find(int label) {
        while (parent[label] != label) label = parent[label] = parent[parent[label]];
        return label;
    }
    void Merge(int from, int into) {
        parent[from] = into;
        LabelledComponent &source = components[from], &target = components[into];
        target.isHopeless = target.isHopeless || source.isHopeless;
        target.runs += source.runs;
        if (source.firstRun != kNone) {
            (target.lastRun == kNone ? target.firstRun : runs[target.lastRun].next) = source.firstRun;
            target.lastRun = source.lastRun;
        }
        source.runs = 0;
    }
    void AddSpan(int x0, int x1, int label) {
        if (x0 <= x1) current.push_back({x0, x1, label});
    }
    void Append(LabelledComponent& component, int x0, int x1, int y) {
        ++component.runs;
        if (component.isHopeless) return;
        if (component.lastRun != kNone) {
            RunSegment& last = runs[component.lastRun];
            if (last.x0 == x0 && last.x1 == x1 && last.y + last.rows == y) {
                ++last.rows;
                return;
            }
        }
        const int run = static_cast<int>(runs.size());
        const auto narrow = [](int value) { return static_cast<std::int16_t>(value); };
        runs.push_back({narrow(x0), narrow(x1), narrow(y), 1, kNone});
        (component.lastRun == kNone ? component.firstRun : runs[component.lastRun].next) = run;
        component.lastRun = run;
    }

    // Between rows: what the last row's spans do not name can grow no more.
    template <class Closed, class IsHopeless>
    void CloseComponents(const Closed& closed, const IsHopeless& isHopeless) {
        std::vector<LabelledComponent> open;
        std::vector<int> newLabels(components.size(), kNone);
        for (LabelledSpan& span : previous) {
            const int label = Find(span.label);
            if (newLabels[label] == kNone) {
                newLabels[label] = static_cast<int>(open.size());
                open.push_back(components[label]);
                components[label].runs = 0;
            }
            span.label = newLabels[label];
        }
        Finish(closed);
        std::size_t live = 0;
        for (LabelledComponent& component : open) {
            component.isHopeless = component.isHopeless || isHopeless(runs, component);
            for (int i = component.firstRun; i != kNone && !component.isHopeless; i = runs[i].next) ++live;
        }
        limit = std::max(kMinLimit, 3 * (live + open.size()) / 2);
        std::vector<RunSegment> kept;
        kept.reserve(limit);
        for (LabelledComponent& component : open) {
            const int start = static_cast<int>(kept.size());
            for (int i = component.firstRun; i != kNone && !component.isHopeless; i = runs[i].next) {
                kept.push_back(runs[i]);
                kept.back().next = static_cast<int>(kept.size());
            }
            const int end = static_cast<int>(kept.size());
            if (end > start) kept.back().next = kNone;
            component.firstRun = end > start ? start : kNone;
            component.lastRun = end > start ? end - 1 : kNone;
        }
        components.swap(open);
        runs.swap(kept);
        parent.resize(components.size());
        std::iota(parent.begin(), parent.end(), 0);
    }

    static constexpr std::size_t kMinLimit = 4096;

    std::vector<RunSegment> runs;
    std::vector<LabelledComponent> components;
    std::vector<int> parent;  // of labels that were merged; a component's own label is its index
    std::vector<LabelledSpan> previous, current;
    std::size_t above = 0;  // first span of the previous row that the next run can touch
    std::size_t limit = kMinLimit;
    std::uint32_t created = 0;
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

// In columns and rows of the page.
Rect BoxOf(const RunSegment& run) {
    return {static_cast<std::int16_t>(kColumnStep * run.x0), run.y,
            static_cast<std::int16_t>(kColumnStep * run.x1), static_cast<std::int16_t>(run.y + run.rows - 1)};
}
Rect BoxOf(const std::vector<RunSegment>& runs, const LabelledComponent& component) {
    Rect box = BoxOf(runs[component.firstRun]);
    for (int i = component.firstRun; i != kNone; i = runs[i].next) box = Union(box, BoxOf(runs[i]));
    return box;
}

// Running sums are of single precision, in the order of the runs.
ComponentRecord Measure(const std::vector<RunSegment>& runs, const LabelledComponent& component) {
    float area = 0, sumX = 0, sumY = 0;
    for (int i = component.firstRun; i != kNone; i = runs[i].next) {
        const Rect box = BoxOf(runs[i]);
        const int length = box.x1 - box.x0 + 1;
        for (int y = box.y0; y <= box.y1; ++y) {
            area += static_cast<float>(length);
            sumX += static_cast<float>(std::int64_t{box.x0 + box.x1} * length / 2);
            sumY += static_cast<float>(std::int64_t{length} * y);
        }
    }
    const auto centre = [&](float sum) { return static_cast<int>(static_cast<double>(sum / area) + 0.5); };
    ComponentRecord record{};
    record.box = BoxOf(runs, component);
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

// Measures components as they are closed and keeps those of the size of text.
class TextCollector {
  public:
    TextCollector(const ConstPlane& grayPage, bool takesWide) : gray(grayPage), wideToo(takesWide) {}

    void Add(const std::vector<RunSegment>& runs, const LabelledComponent& component) {
        if (component.runs < kMinRuns || component.isHopeless) return;
        const ComponentRecord record = Measure(runs, component);
        const int h = record.box.y1 - record.box.y0;
        const bool accepted = IsWide(record.box)
                                  ? wideToo && component.runs > kMinRuns && record.area > kMinArea &&
                                        h > kMinWideHeight && IsMostlyDark(gray, record.box)
                                  : record.area >= kMinArea && !IsHigh(record.box);
        if (accepted) found.push_back({component.number, record});
    }
    // A box only grows, and what it is too large for already it stays too large for.
    bool IsHopeless(const std::vector<RunSegment>& runs, const LabelledComponent& component) const {
        if (wideToo || component.isHopeless) return component.isHopeless;
        const Rect box = BoxOf(runs, component);
        return IsWide(box) || IsHigh(box);
    }
    // In order of creation.
    std::vector<ComponentRecord> Records() {
        std::sort(found.begin(), found.end(),
                  [](const Found& a, const Found& b) { return a.number < b.number; });
        std::vector<ComponentRecord> records;
        for (const Found& one : found) records.push_back(one.record);
        return records;
    }

  private:
    struct Found {
        std::uint32_t number;
        ComponentRecord record;
    };

    bool IsWide(const Rect& box) const { return box.x1 - box.x0 >= gray.rowBytes / 2; }
    bool IsHigh(const Rect& box) const { return box.y1 - box.y0 >= 2 * gray.height / 3; }

    const ConstPlane gray;
    const bool wideToo;
    std::vector<Found> found;
};

}  // namespace

std::vector<ComponentRecord> FindTextComponents(const Mask& mask, const ConstPlane& gray, bool wideToo) {
    const int columns = gray.rowBytes / kColumnStep;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(gray.rowBytes));
    std::vector<std::uint64_t> words(static_cast<std::size_t>(columns) / 64 + 2);
    const auto evenZeroBits = platform::KernelsOf<RegionKernels>().evenZeroBits;
    RunLabeller labeller;
    TextCollector collector(gray, wideToo);
    const auto closed = [&](const auto& runs, const auto& component) { collector.Add(runs, component); };
    const auto isHopeless = [&](const auto& runs, const auto& component) {
        return collector.IsHopeless(runs, component);
    };
    for (int y = 0; y < gray.height; ++y) {
        mask.WriteRow(y, row.data());
        evenZeroBits(row.data(), columns, words.data());
        ForEachRun(words.data(), columns, [&](int x0, int x1) { labeller.AddRun(x0, x1, y); });
        labeller.EndRow(closed, isHopeless);
    }
    labeller.Finish(closed);
    std::vector<ComponentRecord> records = collector.Records();
    SortIntoGroups(records);
    return records;
}

}  // namespace tavrix
