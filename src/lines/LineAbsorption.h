// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "lines/MeasuredLine.h"
#include "tavrix/tavrix.h"

namespace tavrix::lines {

// Merges lines into others. A line that takes in another is projected onto its columns anew (see
// MergeByColumnProjection) and sorted. Where each component stands over columns of its own, only those
// change to which components are added: this is done among the boxes alone, and the tree follows when the
// line's links are written.
class LineAbsorption {
  public:
    explicit LineAbsorption(ComponentStore& storeOfLines) : store(storeOfLines) {}

    // Moves b's components into a. b has neither components nor a node afterwards.
    void Absorb(MeasuredLine& a, MeasuredLine& b);

  private:
    // Components that become one: [coreFrom, coreTo) of the projected line and [addedFrom, addedTo) of those
    // that are added, in the order of their columns.
    struct Meeting {
        std::size_t coreFrom, coreTo, addedFrom, addedTo;
    };
    // One of them, and where it stands among equal ones in the list before the projection.
    struct Member {
        const LetterBox* box;
        int rank;
    };

    bool JoinBoxes(MeasuredLine& a, MeasuredLine& b);
    void JoinNodes(MeasuredLine& a, MeasuredLine& b);
    void FindMeetings(const std::vector<LetterBox>& core, const std::vector<LetterBox>& added);
    LetterBox MergeMembers();

    ComponentStore& store;
    std::vector<std::size_t> byColumn;  // the added components
    std::vector<Meeting> meetings;      // from left to right
    std::vector<Member> members;        // of one meeting
    std::vector<int> changes;           // columns in which components that came or went begin
};

}  // namespace tavrix::lines
