// SPDX-License-Identifier: MIT
#include "components/BoxTree.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "platform/Intrinsics.h"

namespace tavrix {
namespace {

// Bit i: lane i has x0 <= area.x1, x1 >= area.x0 and the same for rows.
template <class Node>
unsigned LanesMeeting(const Node& node, const Rect& area) {
#ifdef TAVRIX_PLAIN_KERNELS
    unsigned lanes = 0;
    for (unsigned lane = 0; lane < std::size(node.x0); ++lane) {
        const bool meets = node.x0[lane] <= area.x1 && node.x1[lane] >= area.x0 && node.y0[lane] <= area.y1 &&
                           node.y1[lane] >= area.y0;
        lanes |= unsigned{meets} << lane;
    }
    return lanes;
#else
    const auto load = [](const std::int16_t* lanes) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
    };
    const __m128i missX = _mm_or_si128(_mm_cmpgt_epi16(load(node.x0), _mm_set1_epi16(area.x1)),
                                       _mm_cmplt_epi16(load(node.x1), _mm_set1_epi16(area.x0)));
    const __m128i missY = _mm_or_si128(_mm_cmpgt_epi16(load(node.y0), _mm_set1_epi16(area.y1)),
                                       _mm_cmplt_epi16(load(node.y1), _mm_set1_epi16(area.y0)));
    const __m128i miss = _mm_or_si128(missX, missY);
    return ~static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(miss, miss))) & 0xFF;
#endif
}

template <class Node>
void SetLane(Node& node, std::size_t lane, const Rect& box) {
    node.x0[lane] = box.x0;
    node.y0[lane] = box.y0;
    node.x1[lane] = box.x1;
    node.y1[lane] = box.y1;
}

template <class Node>
Rect BoundsOf(const Node& node) {
    Rect box = BoxTree::kNone;  // widens nothing
    for (const std::int16_t side : node.x0) box.x0 = std::min(box.x0, side);
    for (const std::int16_t side : node.y0) box.y0 = std::min(box.y0, side);
    for (const std::int16_t side : node.x1) box.x1 = std::max(box.x1, side);
    for (const std::int16_t side : node.y1) box.y1 = std::max(box.y1, side);
    return box;
}

}  // namespace

BoxTree::BoxTree(std::size_t size) : count(static_cast<int>(size)) {
    Node none;
    for (std::size_t lane = 0; lane < kFanOut; ++lane) SetLane(none, lane, kNone);
    do {
        size = (size + kFanOut - 1) / kFanOut;
        levels.emplace_back(size, none);
    } while (size > 1);
}

void BoxTree::SetLeaf(std::size_t i, const Rect& box) {
    SetLane(levels[0][i / kFanOut], i % kFanOut, box);
}

void BoxTree::BuildUpperLevels() {
    for (std::size_t level = 1; level < levels.size(); ++level) {
        const std::vector<Node>& below = levels[level - 1];
        for (std::size_t i = 0; i < below.size(); ++i) {
            SetLane(levels[level][i / kFanOut], i % kFanOut, BoundsOf(below[i]));
        }
    }
}

int BoxTree::Next(int from, const Rect& wanted, int& steps) const {
    Rect area = wanted;
    area.x0 = std::max<std::int16_t>(area.x0, INT16_MIN + 1);  // passes by kNone
    std::size_t level = 0;
    for (auto i = static_cast<std::size_t>(from);;) {
        if (--steps < 0) return kOutOfSteps;
        const std::size_t node = i / kFanOut;
        const unsigned lanes =
            node < levels[level].size() ? LanesMeeting(levels[level][node], area) & 0xFFu << i % kFanOut : 0;
        if (lanes != 0) {
            i = node * kFanOut + static_cast<std::size_t>(std::countr_zero(lanes));
            if (level == 0) return static_cast<int>(i);
            --level;
            i *= kFanOut;
        } else {
            if (++level == levels.size()) return count;
            i = node + 1;
        }
    }
}

Rect BoxTree::At(int position) const {
    const auto i = static_cast<std::size_t>(position);
    const Node& node = levels[0][i / kFanOut];
    const std::size_t lane = i % kFanOut;
    return {node.x0[lane], node.y0[lane], node.x1[lane], node.y1[lane]};
}

void BoxTree::Remove(int position) {
    Set(position, kNone);
}

void BoxTree::Set(int position, const Rect& newBox) {
    Rect box = newBox;
    auto i = static_cast<std::size_t>(position);
    for (std::vector<Node>& level : levels) {
        Node& node = level[i / kFanOut];
        SetLane(node, i % kFanOut, box);
        box = BoundsOf(node);
        i /= kFanOut;
    }
}

}  // namespace tavrix
