// SPDX-License-Identifier: MIT
#include "PlainGrouping.h"

#include <algorithm>
#include <cstdlib>

#include "StoreSupport.h"

namespace tavrix::test {
namespace {

using store::CentreX;
using store::CentreY;
using store::HeightOf;
using store::WidthOf;
using Node = ComponentNode;

constexpr std::uint16_t kWide = 4;

template <class Visit>
void ForEachComponent(const ComponentStore& s, Visit visit) {
    for (Node* block = s.firstBlock; block != nullptr; block = block->next) {
        for (Node* line = block->firstChild; line != nullptr; line = line->next) {
            for (Node* node = line->firstChild; node != nullptr; node = node->next) visit(node, line);
        }
    }
}

void MeanSizes(const Node* line, int& meanW, int& meanH) {
    long w = 0, h = 0, n = 0;
    for (const Node* node = line != nullptr ? line->firstChild : nullptr; node != nullptr;
         node = node->next, ++n) {
        w += std::min(WidthOf(*node), HeightOf(*line));
        h += HeightOf(*node);
    }
    meanW = n == 0 ? 1 : static_cast<int>(w / n);
    meanH = n == 0 ? 1 : static_cast<int>(h / n);
}

struct Shared {
    int left, right, top, bottom;
    Shared(const Node& a, const Node& b)
        : left(std::max(a.left, b.left)),
          right(std::min(a.right, b.right)),
          top(std::min(a.top, b.top)),
          bottom(std::max(a.bottom, b.bottom)) {}
    bool Is(const Node& n) const {
        return left == n.left && right == n.right && top == n.top && bottom == n.bottom;
    }
    double Area() const { return double(top - bottom + 1) * (right - left + 1); }
};

bool MergePass(ComponentStore& s, bool byRatio) {
    bool merged = false;
    ForEachComponent(s, [&](Node* c, Node*) {
        for (Node *d = c->next, *following; d != nullptr; d = following) {
            following = d->next;
            const Shared shared(*c, *d);
            bool merge = (shared.Area() > 0 && shared.right > shared.left && shared.top > shared.bottom) ||
                         shared.Is(*c);
            if (byRatio) {
                const double ratio = shared.Area() / std::min(double(WidthOf(*c)) * HeightOf(*c),
                                                              double(WidthOf(*d)) * HeightOf(*d));
                const bool wide = c->reserved0 == kWide || d->reserved0 == kWide;
                merge = wide ? shared.Is(*c) || shared.Is(*d) : merge && ratio > 0.05;
                if (merge && wide) c->reserved0 = kWide;
            }
            if (!merge) continue;
            c->left = std::min(c->left, d->left);
            c->bottom = std::min(c->bottom, d->bottom);
            c->right = std::max(c->right, d->right);
            c->top = std::max(c->top, d->top);
            store::DeleteComponent(s, d);
            merged = true;
        }
    });
    return merged;
}

bool GatherPlainly(ComponentStore& s, const Node& box) {
    Node* first = s.firstBlock;
    if (first == nullptr || first->firstChild == nullptr) return false;
    Node* source = first->firstChild;
    Node* block = store::InsertBlock(s, first, first->next, {});
    if (block == nullptr) return false;
    Node* line = store::InsertLine(s, block, nullptr, nullptr, {});
    if (line == nullptr) return false;
    block->left = block->bottom = 9999;
    for (Node *node = source->firstChild, *following; node != nullptr; node = following) {
        following = node->next;
        if (CentreX(*node) < box.left || CentreX(*node) > box.right || CentreY(*node) < box.bottom ||
            CentreY(*node) > box.top) {
            continue;
        }
        store::MoveToParent(source, node, line);
        block->left = std::min(block->left, node->left);
        block->bottom = std::min(block->bottom, node->bottom);
        block->right = std::max(block->right, node->right);
        block->top = std::max(block->top, node->top);
    }
    return true;
}

bool IsHorizontal(const ComponentStore& s) {
    long columnScore = 0, rowScore = 0;
    ForEachComponent(s, [&](const Node* c, const Node* line) {
        const int w = WidthOf(*c), h = HeightOf(*c), cx = CentreX(*c), cy = CentreY(*c);
        if (w >= 120 || h >= 120) return;
        for (const Node* d = line->firstChild; d != nullptr; d = d->next) {
            const bool columnVote = d->left <= cx && cx < d->right &&
                                    std::abs(2 * cx - d->right - d->left) < 5 &&
                                    std::abs(w - WidthOf(*d)) < w / 5;
            const bool rowVote = d->bottom <= cy && cy < d->top &&
                                 std::abs(2 * cy - d->top - d->bottom) < 5 &&
                                 std::abs(h - HeightOf(*d)) < h / 5;
            columnScore += w / 5 * columnVote;
            rowScore += h / 5 * rowVote;
        }
    });
    return columnScore <= rowScore;
}

// Stretches, merges and gathers.
bool FormBlocks(ComponentStore& s, int width, int height, double stepX, double stepY, bool byRatio) {
    static Store boxes;
    Node* line =
        store::InsertLine(boxes, store::InsertBlock(boxes, nullptr, nullptr, {}), nullptr, nullptr, {});
    ForEachComponent(s, [&](const Node* node, const Node*) {
        const auto right = static_cast<std::int16_t>(std::min(node->right + stepX, double(width - 1)));
        const auto top = static_cast<std::int16_t>(std::min(node->top + stepY, double(height - 1)));
        Node* box = store::InsertComponent(boxes, line, nullptr, line->firstChild,
                                           {node->left, top, right, node->bottom});
        box->reserved0 = byRatio && WidthOf(*box) > int(width * 0.5) ? kWide : 0;
    });
    while (MergePass(boxes, byRatio)) {
    }
    bool gathered = true;
    for (const Node* box : Children(line)) gathered = gathered && GatherPlainly(s, *box);
    store::DeleteBlock(boxes, boxes.firstBlock);
    return gathered;
}

void Take(ComponentStore& s, Node* a, Node* b) {
    Node *from = b->firstChild, *into = a->firstChild;
    while (from->firstChild != nullptr) store::MoveToParent(from, from->firstChild, into);
    a->left = into->left;
    a->top = into->top;
    a->right = into->right;
    a->bottom = into->bottom;
    store::DeleteBlock(s, b);
}

bool AlignPass(ComponentStore& s, int meanW, int meanH) {
    bool merged = false;
    const int m = std::max(meanW, meanH);
    for (Node* a = s.firstBlock; a != nullptr; a = a->next) {
        const int aw = WidthOf(*a), ah = HeightOf(*a);
        Node* best = nullptr;
        int smallest = 9999;
        for (Node* b = s.firstBlock; b != nullptr; b = b->next) {
            const int bw = WidthOf(*b), bh = HeightOf(*b);
            if (b == a || (std::min(bw, bh) > 5 * m && std::min(aw, ah) > 5 * m)) continue;
            const Shared i(*a, *b);
            int gap = 9999;
            if (i.left < i.right) {
                const int g = std::abs(i.top - i.bottom), overlap = i.right - i.left,
                          longer = std::max(aw, bw);
                if (5 * overlap > 4 * std::min(aw, bw) && longer - overlap < 3 * meanW && g < 4 * longer &&
                    2 * bh >= bw && 2 * ah >= aw) {
                    gap = g;
                }
            } else if (i.bottom < i.top) {
                const int g = std::abs(i.right - i.left), overlap = i.top - i.bottom,
                          longer = std::max(ah, bh);
                if (5 * overlap > 4 * std::min(ah, bh) && longer - overlap < 3 * meanH && g < 4 * longer &&
                    bh <= 2 * bw && ah <= 2 * aw) {
                    gap = g;
                }
            }
            if (gap < smallest) {
                smallest = gap;
                best = b;
            }
        }
        if (best == nullptr) continue;
        Take(s, a, best);
        a->tag = a->firstChild->tag;
        merged = true;
    }
    for (Node* a = s.firstBlock; a != nullptr; a = a->next) {
        for (Node *b = a->next, *following; b != nullptr; b = following) {
            following = b->next;
            const Shared i(*a, *b);
            if (i.left <= i.right && i.bottom <= i.top) Take(s, a, b);
        }
    }
    return merged;
}

}  // namespace

bool GroupOrientedPlainly(ComponentStore& s, int width, int height) {
    const bool horizontal = IsHorizontal(s);
    int meanW, meanH;
    MeanSizes(s.firstBlock != nullptr ? s.firstBlock->firstChild : nullptr, meanW, meanH);
    const float fx = horizontal ? 1.6f : 0.2f, fy = horizontal ? 0.3f : 1.5f;
    if (!FormBlocks(s, width, height, double(meanW) * fx, double(meanH) * fy, true)) return false;
    for (Node* block = s.firstBlock; block != nullptr; block = block->next) {
        for (Node* line : Children(block)) {
            if (WidthOf(*line) > width - 50 && HeightOf(*line) > height - 50) store::DeleteLine(s, line);
        }
    }
    return true;
}

bool GroupAlignedPlainly(ComponentStore& s, int width, int height) {
    int meanW, meanH;
    MeanSizes(s.firstBlock != nullptr ? s.firstBlock->firstChild : nullptr, meanW, meanH);
    if (!FormBlocks(s, width, height, 2 * meanW, 2 * meanH, false)) return false;
    for (Node* block : Siblings(s.firstBlock, nullptr)) {
        const Node* line = block->firstChild;
        if (line == nullptr || line->firstChild == nullptr || long(HeightOf(*block)) * WidthOf(*block) < 9) {
            store::DeleteBlock(s, block);
        }
    }
    while (AlignPass(s, meanW, meanH)) {
    }
    return true;
}

}  // namespace tavrix::test
