// SPDX-License-Identifier: MIT
#include "components/PlainTextLines.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <functional>
#include <vector>

#include "components/ComponentStore.h"

namespace tavrix::plain {
namespace {

using Node = ComponentNode;

int W(const Node* n) {
    return store::WidthOf(*n);
}
int H(const Node* n) {
    return store::HeightOf(*n);
}

void WidenTo(Node* a, const Node* b) {
    a->left = std::min(a->left, b->left);
    a->bottom = std::min(a->bottom, b->bottom);
    a->right = std::max(a->right, b->right);
    a->top = std::max(a->top, b->top);
}

int RowGap(const Node* a, const Node* b) {
    return std::max(a->bottom, b->bottom) - std::min(a->top, b->top);
}
int ColumnShare(const Node* a, const Node* b) {
    return std::min(a->right, b->right) - std::max(a->left, b->left);
}

bool FragmentPass(ComponentStore& s, Node* line) {
    bool merged = false;
    for (Node* a = line->firstChild; a != nullptr; a = a->next) {
        if (W(a) < 5 && H(a) < 5) continue;
        for (Node* b = a->next; b != nullptr;) {
            Node* next = b->next;
            if (W(b) >= 5 || H(b) >= 5) {
                if (b->left > a->right) break;
                int need = static_cast<int>(0.5 * std::min(W(a), W(b)));
                if (need < 5) need = 0;
                if (ColumnShare(a, b) > 0 && RowGap(a, b) < 5 && ColumnShare(a, b) >= need) {
                    WidenTo(a, b);
                    store::DeleteComponent(s, b);
                    merged = true;
                }
            }
            b = next;
        }
    }
    return merged;
}

Node* NextInChain(Node* c) {
    Node* best = nullptr;
    int bestCost = INT_MAX;
    for (Node* d = c->next; d != nullptr; d = d->next) {
        if (d->pixelCount != 0) continue;
        const int cx = store::CentreX(*c), cy = store::CentreY(*c);
        const int dx = store::CentreX(*d), dy = store::CentreY(*d);
        const bool rows = (d->bottom < cy && cy < d->top) || (c->bottom < dy && dy < c->top);
        if (!rows || d->left - c->right >= 3 * std::max(H(c), H(d))) continue;
        if (std::abs(cy - dy) > std::abs(cx - dx)) continue;
        const int cost = std::abs(cx - dx) + std::abs(H(c) - H(d)) + 5 * std::abs(cy - dy);
        if (cost < bestCost) {
            bestCost = cost;
            best = d;
        }
    }
    return best;
}

struct Stats {
    explicit Stats(const Node* line) {
        std::vector<int> heights;
        for (const Node* c = line->firstChild; c != nullptr; c = c->next) heights.push_back(H(c));
        std::sort(heights.begin(), heights.end(), std::greater<>());
        n = static_cast<int>(heights.size());
        if (n != 0) h = heights[heights.size() / 4];
    }
    int h = 0;
    int n = 0;
};

bool Vote(const Node* lineA, const Node* lineB, Stats a, Stats b) {
    const int lineH = std::max(a.h, b.h);
    const Node* shorter = a.n < b.n ? lineA : lineB;
    const Node* other = a.n < b.n ? lineB : lineA;
    const auto small = [](const Node* x) { return W(x) < 10 && H(x) < 10; };
    const auto slim = [](const Node* x) { return 10 * H(x) > 19 * W(x); };
    int votes = 0;
    for (const Node* c = shorter->firstChild; c != nullptr; c = c->next) {
        bool overlapped = false;
        const Node* previous = nullptr;
        const Node* d = other->firstChild;
        for (; d != nullptr && d->left <= c->right; previous = d, d = d->next) {
            if (ColumnShare(c, d) + 1 < 1) continue;
            overlapped = true;
            const int top = std::max(c->top, d->top), bot = std::min(c->bottom, d->bottom);
            const int u = top - bot + 1, g = RowGap(c, d);
            if (10 * u >= 13 * lineH) {
                if (10 * u >= 14 * lineH) continue;
                const bool dot = (small(c) && slim(d) && 3 * (c->bottom - d->top) < H(d)) ||
                                 (small(d) && slim(c) && 3 * (d->bottom - c->top) < H(c));
                if (!dot || 10 * g >= 3 * u) continue;
                ++votes;
                break;
            }
            if (g < 6 || (((small(c) && slim(d)) || (small(d) && slim(c))) && 10 * g < 3 * u)) {
                ++votes;
                break;
            }
            const Node* ref = nullptr;
            for (const Node* e = d->prev; e != nullptr && e->right >= c->left - 2 * lineH; e = e->prev) {
                if (3 * H(e) > 2 * lineH) {
                    ref = e;
                    break;
                }
            }
            for (const Node* e = d->next; e != nullptr && e->left <= c->right + 2 * lineH; e = e->next) {
                if (3 * H(e) <= 2 * lineH) continue;
                if (ref == nullptr || std::abs(H(e) - lineH) < std::abs(H(ref) - lineH)) ref = e;
                break;
            }
            bool lookAround = ref == nullptr;
            if (ref != nullptr) {
                if (W(c) < 15 && H(c) < 15 && W(d) < 15 && H(d) < 15 && top < ref->top + 5 &&
                    bot > ref->bottom - 5) {
                    ++votes;
                    break;
                }
                if (std::abs(top - ref->top) > 7 && std::abs(bot - ref->bottom) > 7) {
                    if (H(ref) < lineH + 3 && u < lineH && top < ref->top && bot > ref->bottom) {
                        ++votes;
                        break;
                    }
                    lookAround = true;
                } else if (g < 11 || 10 * u <= 12 * lineH || 3 * H(d) <= 2 * lineH) {
                    ++votes;
                    break;
                }
            }
            if (!lookAround || H(c) >= lineH) continue;
            const auto fits = [&](const Node* e) {
                return 10 * H(e) < 12 * lineH && top < e->top + 5 && bot > e->bottom - 5;
            };
            bool found = false;
            for (const Node* e = previous; !found && e && e->right >= c->left - 3 * lineH; e = e->prev) {
                found = fits(e);
            }
            for (const Node* e = d; !found && e && e->left <= c->right + 3 * lineH; e = e->next) {
                found = fits(e);
            }
            votes += found;
        }
        if (overlapped) continue;
        int least = INT_MAX;
        for (const Node* beside : {previous, d}) {
            if (beside && 10 * H(beside) < 15 * lineH) least = std::min(least, RowGap(c, beside));
        }
        if (least < 0) {
            ++votes;
            continue;
        }
        if (2 * H(c) >= lineH) continue;
        const auto level = [&](const Node* e) {
            return 10 * H(e) < 15 * lineH && (RowGap(c, e) < 0 || (small(c) && RowGap(c, e) < 6));
        };
        bool found = false;
        for (const Node* e = previous; !found && e && e->right >= c->left - 2 * lineH; e = e->prev) {
            found = level(e);
        }
        for (const Node* e = d; !found && e && e->left <= c->right + 2 * lineH; e = e->next) {
            found = level(e);
        }
        votes += found;
    }
    return 2 * votes > std::min(a.n, b.n);
}

bool Joins(const Node* a, const Node* b, int imageWidth) {
    const Stats sa(a), sb(b);
    const int iL = std::max(a->left, b->left), iR = std::min(a->right, b->right);
    const int iB = std::max(a->bottom, b->bottom), iT = std::min(a->top, b->top);
    if (iL <= iR && iB <= iT) return Vote(a, b, sa, sb);
    if (iL < iR) return false;
    const int gap = iL - iR, hMax = std::max(sa.h, sb.h), hMin = std::min(sa.h, sb.h);
    if (!(gap < 3.5 * hMax)) return false;
    const Node* l = a->left < b->left ? a : b;
    const Node* r = l == a ? b : a;
    const Node* last = l->firstChild;
    while (last->next != nullptr) last = last->next;
    while (last->prev != nullptr && 3 * H(last) <= 2 * Stats(l).h) last = last->prev;
    const Node* first = r->firstChild;
    const int distance = first->left - last->right;
    const int overlap = std::min(first->top, last->top) - std::max(first->bottom, last->bottom);
    const int least = std::min(H(first), H(last));
    if (10 * hMax >= 12 * hMin) {
        return gap < 1.5 * hMax && distance < 3 * hMax && overlap > 0.3 * least;
    }
    if (hMin <= 20) return false;
    if (gap > 1.5 * hMax) {
        if (4 * r->left > 3 * imageWidth && gap > 2 * hMax) return false;
        if (5 * r->left > 4 * imageWidth) return false;
    }
    const int needed = 2 * H(first) > Stats(r).h ? static_cast<int>(0.6 * least) : 0;
    return distance < 5 * hMax && overlap > needed;
}

bool LinePass(ComponentStore& s, int imageWidth) {
    bool merged = false;
    for (Node* a = s.firstBlock->firstChild; a != nullptr; a = a->next) {
        for (Node* b = s.firstBlock->firstChild; b != nullptr;) {
            Node* next = b->next;
            if (b != a && Joins(a, b, imageWidth)) {
                while (b->firstChild != nullptr) store::MoveToParent(b, b->firstChild, a);
                store::DeleteLine(s, b);
                store::SortChildren(a, true);
                MergeByColumnProjection(s, a);
                store::SortChildren(a, true);
                merged = true;
            }
            b = next;
        }
    }
    return merged;
}

bool IsInk(const DibImage& image, int x, int y) {
    return image.GetPixel(x, y) == 0;
}
bool HasInk(const DibImage& image, int x0, int y0, int x1, int y1) {
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            if (IsInk(image, x, y)) return true;
        }
    }
    return false;
}

store::Box Shrunk(const DibImage& image, const store::Box& box) {
    if (!HasInk(image, box.left, box.bottom, box.right, box.top)) return box;
    store::Box r = box;
    while (!HasInk(image, r.left, box.bottom, r.left, box.top)) ++r.left;
    while (!HasInk(image, r.right, box.bottom, r.right, box.top)) --r.right;
    while (!HasInk(image, box.left, r.bottom, box.right, r.bottom)) ++r.bottom;
    while (!HasInk(image, box.left, r.top, box.right, r.top)) --r.top;
    return r;
}

void Cut(ComponentStore& s, const DibImage& image, Node* c, int pieceW) {
    const int n = W(c);
    std::vector<int> ink, span, mark(static_cast<std::size_t>(n));
    for (int x = c->left; x <= c->right; ++x) {
        int count = 0, low = INT_MAX, high = 0;
        for (int y = c->bottom; y <= c->top; ++y) {
            if (!IsInk(image, x, y)) continue;
            ++count;
            low = std::min(low, y);
            high = y;
        }
        ink.push_back(count);
        span.push_back(count != 0 ? high - low + 1 : span.empty() ? 0 : span.back());
    }
    const int border = std::max(2 * pieceW / 3, 1);
    const auto at = [](std::vector<int>& v, int i) -> int& { return v[static_cast<std::size_t>(i)]; };
    for (int i = border; i <= n - border - 1; ++i) {
        if (4 * std::abs(at(span, i) - at(span, i + 1)) > 2 * H(c)) {
            at(mark, i) = 2;
        } else if (4 * at(ink, i) <= H(c) && at(span, i) < H(c) / 3 &&
                   std::abs(at(span, i) - at(ink, i)) < at(ink, i) / 2) {
            at(mark, i) = 1;
        }
    }
    for (int i = 0; i < n;) {
        if (at(mark, i) != 1) {
            ++i;
            continue;
        }
        int least = i;
        for (; i < n && at(mark, i) != 0; ++i) {
            if (at(ink, i) < at(ink, least)) least = i;
        }
        if (least != 0) at(mark, least) = 2;
    }
    int kept = 0;
    for (int i = 1; i < n; ++i) {
        if (at(mark, i) != 2) continue;
        if (3 * (i - kept) < 2 * pieceW) {
            if (at(ink, i) >= at(ink, kept)) {
                at(mark, i) = 0;
                continue;
            }
            at(mark, kept) = 0;
        }
        kept = i;
    }
    const int left = c->left;
    store::Box box{c->left, c->top, c->right, c->bottom};
    for (int i = 1; i < n; ++i) {
        if (at(mark, i) != 2) continue;
        const auto end = static_cast<std::int16_t>(left + i);
        store::InsertComponent(s, c->parent, c->prev, c, Shrunk(image, {box.left, box.top, end, box.bottom}));
        box.left = end;
    }
    box = Shrunk(image, box);
    c->left = box.left;
    c->top = box.top;
    c->right = box.right;
    c->bottom = box.bottom;
}

}  // namespace

void MergeOverlappingComponents(ComponentStore& s) {
    for (Node* block = s.firstBlock; block != nullptr; block = block->next) {
        block->pixelCount = 1002;
        for (Node* line = block->firstChild; line != nullptr; line = line->next) {
            for (Node* c = line->firstChild; c != nullptr; c = c->next) {
                for (Node* d = c->next; d != nullptr;) {
                    const bool overlap = ColumnShare(c, d) > 0 && RowGap(c, d) < 0;
                    if (!overlap) {
                        d = d->next;
                        continue;
                    }
                    WidenTo(c, d);
                    c->pixelCount += d->pixelCount;
                    store::DeleteComponent(s, d);
                    d = c->next;
                }
            }
        }
    }
}

void MergeColumnFragments(ComponentStore& s) {
    while (FragmentPass(s, s.firstBlock->firstChild)) {
    }
}

void ChainAndSplit(ComponentStore& s) {
    Node* block = s.firstBlock;
    Node* line = block->firstChild;
    for (Node* c = line->firstChild; c != nullptr; c = c->next) c->pixelCount = 0;
    std::uint32_t label = 0;
    for (Node* c = line->firstChild; c != nullptr; c = c->next) {
        if (c->pixelCount != 0) continue;
        ++label;
        for (Node* d = c; d != nullptr; d = NextInChain(d)) d->pixelCount = label;
    }
    while (line->firstChild != nullptr) {
        Node* first = line->firstChild;
        Node* chain = store::InsertLine(s, block, nullptr, block->firstChild, {});
        if (chain == nullptr) break;
        for (Node* c = first->next; c != nullptr;) {
            Node* next = c->next;
            if (c->pixelCount == first->pixelCount) store::MoveToParent(line, c, chain);
            c = next;
        }
        store::MoveToParent(line, first, chain);
    }
    if (line->firstChild == nullptr) store::DeleteLine(s, line);
    store::RebuildLineBoxes(s, block);
}

void MergeByColumnProjection(ComponentStore& s, Node* line) {
    std::vector<unsigned> columns(static_cast<std::size_t>(W(line)) + 1);
    const int count = W(line);
    for (const Node* c = line->firstChild; c != nullptr; c = c->next) {
        const int m = W(c) > 5 ? 2 : 0;
        for (int x = c->left + m; x <= c->right - m - 1; ++x) {
            columns[static_cast<std::size_t>(x - line->left)] += static_cast<unsigned>(H(c));
        }
    }
    std::vector<Node*> made;
    for (int start = 0; start < count;) {
        int end = start;
        while (end < count && columns[static_cast<std::size_t>(end)] != 0) ++end;
        if (end == start) {
            ++start;
            continue;
        }
        store::Box box{9999, 0, 0, 9999};
        for (Node* c = line->firstChild; c != nullptr;) {
            Node* next = c->next;
            const int x = store::CentreX(*c) - line->left;
            if (start <= x && x <= end && std::find(made.begin(), made.end(), c) == made.end()) {
                box = {std::min(box.left, c->left), std::max(box.top, c->top), std::max(box.right, c->right),
                       std::min(box.bottom, c->bottom)};
                store::DeleteComponent(s, c);
            }
            c = next;
        }
        made.push_back(store::InsertComponent(s, line, nullptr, line->firstChild, box));
        start = end;
    }
}

void MergeLinePairs(ComponentStore& s, int imageWidth) {
    while (LinePass(s, imageWidth)) {
    }
}

void SplitWideComponents(ComponentStore& s, const DibImage& image) {
    for (Node* line = s.firstBlock->firstChild; line != nullptr; line = line->next) {
        store::SortChildren(line, true);
        int sum = 0, count = 0, heights = 0, all = 0;
        for (Node* c = line->firstChild; c != nullptr; c = c->next, ++all) {
            heights += H(c);
            if (W(c) > 1.5 * H(c)) continue;
            sum += W(c);
            ++count;
        }
        if (all == 0) continue;
        const int meanW = count != 0 ? sum / count : heights / all;
        for (Node* c = line->firstChild; c != nullptr;) {
            Node* next = c->next;
            const int k = (10 * W(c) / meanW + 5) / 10;
            const int before = c->prev != nullptr ? std::max(c->left - c->prev->right, 0) : 0;
            const int after = next != nullptr ? std::max(next->left - c->right, 0) : 0;
            if (k > 1 && W(c) > 4 * std::min(before, after)) Cut(s, image, c, W(c) / k);
            c = next;
        }
    }
}

}  // namespace tavrix::plain
