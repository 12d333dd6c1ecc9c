// SPDX-License-Identifier: MIT
#include "components/BoxIndex.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>

namespace tavrix {
namespace {

using store::Box;

// Meets nothing and widens nothing.
constexpr Box kNoBox{32767, -32768, -32768, 32767};

// Bit i: lane i has left <= area.right, right >= area.left and the same for rows.
template <class Node>
unsigned LanesMeeting(const Node& node, const Box& area) {
    const auto load = [](const std::int16_t* lanes) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
    };
    const __m128i missX = _mm_or_si128(_mm_cmpgt_epi16(load(node.left), _mm_set1_epi16(area.right)),
                                       _mm_cmplt_epi16(load(node.right), _mm_set1_epi16(area.left)));
    const __m128i missY = _mm_or_si128(_mm_cmpgt_epi16(load(node.bottom), _mm_set1_epi16(area.top)),
                                       _mm_cmplt_epi16(load(node.top), _mm_set1_epi16(area.bottom)));
    const __m128i miss = _mm_or_si128(missX, missY);
    return ~static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(miss, miss))) & 0xFF;
}

template <class Node>
void SetLane(Node& node, std::size_t lane, const Box& box) {
    node.left[lane] = box.left;
    node.right[lane] = box.right;
    node.bottom[lane] = box.bottom;
    node.top[lane] = box.top;
}

template <class Node>
Box BoundsOf(const Node& node) {
    Box box = kNoBox;
    for (const std::int16_t side : node.left) box.left = std::min(box.left, side);
    for (const std::int16_t side : node.right) box.right = std::max(box.right, side);
    for (const std::int16_t side : node.bottom) box.bottom = std::min(box.bottom, side);
    for (const std::int16_t side : node.top) box.top = std::max(box.top, side);
    return box;
}

}  // namespace

Box Ordered(const Box& box) {
    return {std::min(box.left, box.right), std::max(box.top, box.bottom), std::max(box.left, box.right),
            std::min(box.top, box.bottom)};
}

BoxIndex::BoxIndex(std::size_t size) : count(static_cast<int>(size)) {
    Node none;
    for (std::size_t lane = 0; lane < kFanOut; ++lane) SetLane(none, lane, kNoBox);
    do {
        size = (size + kFanOut - 1) / kFanOut;
        levels.emplace_back(size, none);
    } while (size > 1);
}

void BoxIndex::SetLeaf(std::size_t i, const Box& box) {
    SetLane(levels[0][i / kFanOut], i % kFanOut, box);
}

void BoxIndex::BuildUpperLevels() {
    for (std::size_t level = 1; level < levels.size(); ++level) {
        const std::vector<Node>& below = levels[level - 1];
        for (std::size_t i = 0; i < below.size(); ++i) {
            SetLane(levels[level][i / kFanOut], i % kFanOut, BoundsOf(below[i]));
        }
    }
}

int BoxIndex::Next(int from, const Box& wanted) const {
    Box area = wanted;
    area.left = std::max<std::int16_t>(area.left, -32767);  // passes by kNoBox
    std::size_t level = 0;
    for (auto i = static_cast<std::size_t>(from);;) {
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

void BoxIndex::Set(int position, const Box& box) {
    Replace(position, Ordered(box));
}

void BoxIndex::Remove(int position) {
    Replace(position, kNoBox);
}

void BoxIndex::Replace(int position, Box box) {
    auto i = static_cast<std::size_t>(position);
    for (std::vector<Node>& level : levels) {
        Node& node = level[i / kFanOut];
        SetLane(node, i % kFanOut, box);
        box = BoundsOf(node);
        i /= kFanOut;
    }
}

}  // namespace tavrix
