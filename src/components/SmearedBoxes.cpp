// SPDX-License-Identifier: MIT
#include "components/SmearedBoxes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>

#include "components/BoxIndex.h"

namespace tavrix {
namespace {

Rect InsideOut(const Rect& box) {
    return {box.x1, box.y1, box.x0, box.y0};
}

// Some of the boxes, whatever the order of their sides: finds those that hold a box or lie in it.
class NestingIndex {
  public:
    template <class IsMember>
    NestingIndex(const std::vector<SmearedBox>& boxes, IsMember isMember)
        : outer(boxes.size(), [&](std::size_t i) { return isMember(i) ? boxes[i] : BoxIndex::kNone; }),
          inner(boxes.size(),
                [&](std::size_t i) { return isMember(i) ? InsideOut(boxes[i]) : BoxIndex::kNone; }) {}

    int Next(int from, const Rect& box) const {
        return std::min(outer.Next(from, InsideOut(box)), inner.Next(from, box));
    }
    void Set(int i, const Rect& box) {
        outer.Set(i, box);
        inner.Set(i, InsideOut(box));
    }
    void Remove(int i) {
        outer.Remove(i);
        inner.Remove(i);
    }

  private:
    BoxIndex outer;
    BoxIndex inner;
};

// Finds the boxes that may merge with another one. Common ones need only meet; one that is wide, or whose
// sides are out of order or equal, merges with such as hold it or lie in it alone.
class MergePartners {
  public:
    explicit MergePartners(const std::vector<SmearedBox>& boxes)
        : hasOthers(!std::all_of(boxes.begin(), boxes.end(), IsCommon) &&
                    std::none_of(boxes.begin(), boxes.end(), IsOutOfRange)),
          meeting(boxes.size(), [&](std::size_t i) {
              return hasOthers && !IsCommon(boxes[i]) ? BoxIndex::kNone : Ordered(boxes[i]);
          }) {
        if (!hasOthers) return;
        common.emplace(boxes, [&](std::size_t i) { return IsCommon(boxes[i]); });
        others.emplace(boxes, [&](std::size_t i) { return !IsCommon(boxes[i]); });
    }

    int Count() const { return meeting.Count(); }
    // The first one from position `from` on, or Count().
    int Next(int from, const SmearedBox& box) const {
        if (!hasOthers) return meeting.Next(from, Ordered(box));
        return std::min(others->Next(from, box),
                        IsCommon(box) ? meeting.Next(from, box) : common->Next(from, box));
    }
    void Set(int i, const SmearedBox& box) {
        if (!hasOthers) {
            meeting.Set(i, Ordered(box));
        } else if (IsCommon(box)) {
            others->Remove(i);
            meeting.Set(i, box);
            common->Set(i, box);
        } else {
            meeting.Remove(i);
            common->Remove(i);
            others->Set(i, box);
        }
    }
    void Remove(int i) {
        meeting.Remove(i);
        if (!hasOthers) return;
        common->Remove(i);
        others->Remove(i);
    }

  private:
    static bool IsCommon(const SmearedBox& box) { return !box.wide && box.x0 < box.x1 && box.y0 < box.y1; }
    // The index searches from the next column on.
    static bool IsOutOfRange(const SmearedBox& box) { return box.x0 == INT16_MIN || box.x1 == INT16_MIN; }

    const bool hasOthers;
    BoxIndex meeting;
    std::optional<NestingIndex> common;
    std::optional<NestingIndex> others;
};

}  // namespace

bool OverlapsOrLiesIn(const Rect& a, const Rect& b) {
    return DoOverlap(a, b) || Contains(b, a);
}

// A box's turn can only have a new outcome when the box itself or a later one that it would now absorb has
// grown since its last turn. So a pass gives turns to these alone.
std::vector<SmearedBox> MergeOverlaps(std::vector<SmearedBox> boxes, MergeRule rule) {
    MergePartners partners(boxes);
    std::vector<int> turns(boxes.size());
    std::iota(turns.begin(), turns.end(), 0);
    std::vector<char> isAbsorbed(boxes.size(), 0);

    while (!turns.empty()) {
        std::vector<int> grown;
        for (const int i : turns) {
            if (isAbsorbed[i]) continue;
            SmearedBox& box = boxes[i];
            bool hasGrown = false;
            for (int k = partners.Next(i + 1, box); k < partners.Count(); k = partners.Next(k + 1, box)) {
                if (!rule(box, boxes[k])) continue;
                box = {Union(box, boxes[k]), box.wide || boxes[k].wide};
                partners.Remove(k);
                isAbsorbed[k] = 1;
                hasGrown = true;
            }
            if (!hasGrown) continue;
            partners.Set(i, box);
            grown.push_back(i);
        }
        turns = grown;
        for (const int i : grown) {
            for (int k = partners.Next(0, boxes[i]); k < i; k = partners.Next(k + 1, boxes[i])) {
                if (rule(boxes[k], boxes[i])) turns.push_back(k);
            }
        }
        std::sort(turns.begin(), turns.end());
        turns.erase(std::unique(turns.begin(), turns.end()), turns.end());
    }

    std::size_t kept = 0;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!isAbsorbed[i]) boxes[kept++] = boxes[i];
    }
    boxes.resize(kept);
    return boxes;
}

}  // namespace tavrix
