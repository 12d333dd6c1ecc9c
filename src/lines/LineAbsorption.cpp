// SPDX-License-Identifier: MIT
#include "lines/LineAbsorption.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

#include "components/ComponentStore.h"
#include "components/ComponentTree.h"
#include "components/NodeMoves.h"
#include "lines/ColumnProjection.h"

namespace tavrix::lines {
namespace {

// Room for so many more items. Memory can run out here alone.
template <class Item>
void MakeRoom(std::vector<Item>& items, std::size_t more) {
    const std::size_t needed = items.size() + more;
    if (items.capacity() < needed) items.reserve(std::max(needed, 2 * items.capacity()));
}

void AddHeight(std::vector<std::uint16_t>& heights, std::uint16_t height) {
    heights.insert(std::upper_bound(heights.begin(), heights.end(), height), height);
}

void RemoveHeight(std::vector<std::uint16_t>& heights, std::uint16_t height) {
    heights.erase(std::lower_bound(heights.begin(), heights.end(), height));
}

}  // namespace

void LineAbsorption::Absorb(MeasuredLine& a, MeasuredLine& b) {
    if (!JoinBoxes(a, b)) {
        JoinNodes(a, b);
        b = MeasuredLine();
        return;
    }
    b = MeasuredLine();
    const auto update = [&](int x) { return a.extents.Update(a.boxes, x); };
    if (!std::all_of(changes.begin(), changes.end(), update)) a.BuildExtents();
}

// False, with nothing done, where neither line is projected yet or one has a box of a rule of its own.
bool LineAbsorption::JoinBoxes(MeasuredLine& a, MeasuredLine& b) {
    if (!a.isPlain || !b.isPlain || !(a.isProjected || b.isProjected)) return false;
    const bool isCoreB = !a.isProjected || (b.isProjected && b.Count() > a.Count());
    std::vector<LetterBox>& core = (isCoreB ? b : a).boxes;
    const std::vector<LetterBox>& added = (isCoreB ? a : b).boxes;
    std::vector<std::uint16_t>& heights = (isCoreB ? b : a).heights;
    MakeRoom(core, added.size());
    MakeRoom(heights, added.size());
    members.clear();
    MakeRoom(members, core.size() + added.size());
    changes.clear();
    MakeRoom(changes, core.size() + added.size());
    FindMeetings(core, added);

    SetRect(*a.node, Union(RectOf(*a.node), RectOf(*b.node)));
    b.node->firstChild = nullptr;
    store::DeleteLine(store, b.node);
    std::ptrdiff_t shift = 0;
    for (const Meeting& meeting : meetings) {
        const auto from = core.begin() + static_cast<std::ptrdiff_t>(meeting.coreFrom) + shift;
        const auto to = core.begin() + static_cast<std::ptrdiff_t>(meeting.coreTo) + shift;
        // Equal ones of b stand behind those of a, which stand in reverse.
        members.clear();
        for (auto box = from; box != to; ++box) {
            members.push_back({&*box, static_cast<int>(box - from)});
            RemoveHeight(heights, box->height);
        }
        for (std::size_t i = meeting.addedFrom; i < meeting.addedTo; ++i) {
            const int position = static_cast<int>(byColumn[i]);
            members.push_back(
                {&added[byColumn[i]], isCoreB ? -1 - position : TAVRIX_STORE_CAPACITY + position});
        }
        for (const Member& member : members) changes.push_back(member.box->x0);
        const LetterBox merged = MergeMembers();
        AddHeight(heights, merged.height);
        if (from == to) {
            core.insert(from, merged);
        } else {
            *from = merged;
            core.erase(from + 1, to);
        }
        shift += 1 - (to - from);
    }
    if (isCoreB) {
        a.boxes.swap(b.boxes);
        a.heights.swap(b.heights);
        std::swap(a.extents, b.extents);
    }
    a.isAhead = a.isProjected = true;
    a.UpdateQuartile();
    return true;
}

// Components of the core that stand over the same columns as added ones, and these among each other.
void LineAbsorption::FindMeetings(const std::vector<LetterBox>& core, const std::vector<LetterBox>& added) {
    byColumn.resize(added.size());
    std::iota(byColumn.begin(), byColumn.end(), std::size_t{0});
    const auto covered = [&](std::size_t i) { return CoverageOf(added[byColumn[i]]); };
    std::sort(byColumn.begin(), byColumn.end(), [&](std::size_t i, std::size_t k) {
        return CoverageOf(added[i]).from < CoverageOf(added[k]).from;
    });
    meetings.clear();
    std::size_t coreTo = 0;
    for (std::size_t addedTo = 0; addedTo < added.size();) {
        int to = covered(addedTo).to;
        const std::size_t addedFrom = addedTo++;
        const std::size_t coreFrom = coreTo = static_cast<std::size_t>(
            std::partition_point(
                core.begin() + static_cast<std::ptrdiff_t>(coreTo), core.end(),
                [&](const LetterBox& box) { return CoverageOf(box).to < covered(addedFrom).from; }) -
            core.begin());
        for (;;) {
            if (coreTo < core.size() && CoverageOf(core[coreTo]).from <= to) {
                to = std::max(to, CoverageOf(core[coreTo++]).to);
            } else if (addedTo < added.size() && covered(addedTo).from <= to) {
                to = std::max(to, covered(addedTo++).to);
            } else {
                break;
            }
        }
        meetings.push_back({coreFrom, coreTo, addedFrom, addedTo});
    }
}

// The component that the members become. It takes the node of the last of them in the list.
LetterBox LineAbsorption::MergeMembers() {
    std::sort(members.begin(), members.end(), [](const Member& a, const Member& b) {
        return std::tie(a.box->x0, a.box->x1, a.rank) < std::tie(b.box->x0, b.box->x1, b.rank);
    });
    Rect bounds = store::kUnionStart;
    for (const Member& member : members) {
        bounds = Union(bounds, *member.box);
        store::FreeNode(store, store.nodes + member.box->slot);
        --store.componentCount;
    }
    ++store.componentCount;
    return {*store::AllocNode(store, bounds, 0, NODE_COMPONENT, nullptr, nullptr, nullptr, nullptr), store};
}

void LineAbsorption::JoinNodes(MeasuredLine& a, MeasuredLine& b) {
    if (a.isAhead) a.WriteLinks(store);
    if (b.isAhead) b.WriteLinks(store);
    store::ForEachChild(*b.node, [&](ComponentNode* node) { store::MoveToParent(b.node, node, a.node); });
    store::DeleteLine(store, b.node);
    store::SortChildren(a.node);
    MergeByColumnProjection(store, a.node);
    store::SortChildren(a.node);
    a.Measure(store);
}

}  // namespace tavrix::lines
