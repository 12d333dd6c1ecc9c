// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "binarize/Binarizer.h"
#include "support/HostImage.h"

namespace tavrix::test {

// The edge-guided binarization pixel by pixel and step by step, as slow as it gets: what the fast one is
// compared with. Shares no code with it but the isodata and Otsu thresholds.
struct EdgeRegionReference {
    using Bytes = std::vector<std::uint8_t>;
    struct Rect {
        int x0, y0, x1, y1;
        int Area() const { return (x1 - x0 + 1) * (y1 - y0 + 1); }
    };
    struct Run {
        int x0, x1, y;
        bool operator==(const Run&) const = default;
    };
    struct Component {
        int area = 0, runEnds = 0;
        std::vector<Run> runs;
        bool operator==(const Component&) const = default;
    };
    using Histogram = std::array<std::uint32_t, 256>;
    struct Shares {
        float high, mid, midLow, midHigh, low;
    };
    struct Record {
        int group, area, left, right, bottom, top, centreX, centreY;
    };
    struct Region {
        int left, right, bottom, top, flag;
        Rect AsRect() const { return {left, top, right, bottom}; }
    };
    int width, rowBytes, height;
    Bytes src;
    bool darkTextHint = false, useAltRegionRule = false, sharpenAllowed = true, globalThresholdUsed = false;
    int strokeEndCount = 0, edgeCutOverride = 0;

    std::size_t At(int x, int y) const { return static_cast<std::size_t>(y) * rowBytes + x; }
    Rect Whole() const { return {0, 0, width - 1, height - 1}; }
    template <class Pass>
    static void ForRect(Rect rect, const Pass& pass) {
        for (int y = rect.y0; y <= rect.y1; ++y) {
            for (int x = rect.x0; x <= rect.x1; ++x) pass(x, y);
        }
    }
    static std::int64_t Sum(const Histogram& h, int first, int last) {
        std::int64_t sum = 0;
        for (int i = first; i <= last; ++i) sum += h[i];
        return sum;
    }
    static int Trunc(double value) { return static_cast<int>(value); }
    explicit EdgeRegionReference(const HostImage& page)
        : width(page.Width()),
          rowBytes(static_cast<int>(page.RowBytes())),
          height(page.Height()),
          src(page.Record().bits, page.Record().bits + page.Header().biSizeImage) {}

    Histogram Count(Rect rect, const Bytes& buffer) const {
        Histogram h{};
        ForRect(rect, [&](int x, int y) { ++h[buffer[At(x, y)]]; });
        return h;
    }

    int ContrastLevel() const {
        const Histogram h = Count(Whole(), src);
        const double n = static_cast<double>(src.size());
        if (static_cast<double>(Sum(h, 25, 229)) / n < 0.5) return 1;
        return static_cast<double>(Sum(h, 192, 254)) / n < 0.1 ? 0 : 2;
    }

    void SobelMagnitude(const Bytes& from, Bytes& to, Rect rect, bool maskPass) const {
        const auto s = [&](int x, int y) { return static_cast<int>(from[At(x, y)]); };
        ForRect(rect, [&](int x, int y) {
            to[At(x, y)] = 0;
            if (y < 1 || y > height - 2 || x < 1 || x > rowBytes - 2) return;
            const int gy = 2 * (s(x, y - 1) - s(x, y + 1)) - s(x - 1, y + 1) - s(x + 1, y + 1) +
                           s(x - 1, y - 1) + s(x + 1, y - 1);
            const int gx = 2 * (s(x + 1, y) - s(x - 1, y)) - s(x - 1, y - 1) - s(x - 1, y + 1) +
                           s(x + 1, y - 1) + s(x + 1, y + 1);
            to[At(x, y)] = static_cast<std::uint8_t>(std::min(255, Trunc(std::sqrt(gx * gx + gy * gy))));
        });
        if (!maskPass) return;
        const int cut = edgeCutOverride > 0 ? edgeCutOverride : 250;
        ForRect(rect, [&](int x, int y) {
            if (y == 0 || y == height - 1 || x == 0 || x == rowBytes - 1) return;
            to[At(x, y)] = to[At(x, y)] <= cut ? 255 : 0;
        });
    }

    void EdgeLevelLoop(const Bytes& b, int level, Bytes& a) const {
        constexpr int kThresholds[] = {82, 145, 217, 255};
        bool up = false, down = false, first = true;
        int previous = 0;
        for (;;) {
            if (!first) {
                const int diff = level - previous;
                if (diff > 0 || level == 3) up = true;
                if (diff < 0 || level == 0) down = true;
            }
            for (std::size_t i = 0; i < b.size(); ++i) a[i] = b[i] >= kThresholds[level] ? 0 : 255;
            previous = level;
            const bool stop = up && down;
            if (!stop) {
                const double z =
                    static_cast<double>(std::count(a.begin(), a.end(), 0)) / static_cast<double>(a.size());
                level = std::clamp(z > 0.139 ? level + 2 : z >= 0.07 ? level : level - 1, 0, 3);
            }
            first = false;
            if (level == previous || stop) return;
        }
    }

    int CountStrokeEnds(const Bytes& mask) const {
        int count = 0;
        ForRect({1, 0, width - 1, height - 2}, [&](int x, int y) {
            if (x == rowBytes - 1) return;
            count += mask[At(x, y)] == 0 && mask[At(x + 1, y)] != 0 && mask[At(x - 1, y + 1)] != 0 &&
                     mask[At(x, y + 1)] != 0 && mask[At(x + 1, y + 1)] != 0;
        });
        return count;
    }

    int Classify(const Histogram& h, Shares& shares) const {
        const auto all = static_cast<float>(Sum(h, 0, 255));
        const auto share = [&](int a, int b) { return static_cast<float>(Sum(h, a, b)) / all; };
        shares = {share(191, 255), share(63, 190), share(63, 126), share(127, 190), share(0, 62)};
        const double H = shares.high, M = shares.mid, ML = shares.midLow, MH = shares.midHigh, L = shares.low;
        const double D = std::fabs(shares.low - shares.midLow);
        const int c = strokeEndCount;
        if (H > 0.5) {
            if (H > 0.7 && MH > 0.1) return 0;
            if (M > 0.3) return 0;
            if (MH > 0.19) return 0;
            if (L < 0.1 && H > 0.8) return 0;
            if (L <= 0.2) return D >= 0.02 ? 1 : 2;
            if (c > 4500) return M <= 0.06 ? 7 : 0;
            if (c > 2800) return L > 0.3 ? 7 : M <= 0.06 ? 1 : 0;
            return L > 0.25 ? 7 : M <= 0.06 ? 1 : 0;
        }
        if (L > 0.5) return M <= 0.4 ? 3 : 2;
        if (H > 0.3 && ML > 0.3 && MH < 0.3) return 5;
        if (L > 0.3 && MH > 0.3 && ML < 0.3) return 5;
        if (M > 0.4) return 4;
        if (L <= 0.2) return 5;
        if (H <= 0.2) return 5;
        return M > 0.15 ? 4 : 5;
    }

    static int DarkMeanCheck(const Histogram& h, bool check) {
        const std::int64_t s1 = Sum(h, 0, 131), s2 = s1 + Sum(h, 132, 254);
        std::int64_t m1 = 0;
        for (int i = 0; i <= 131; ++i) m1 += std::int64_t{i} * h[i];
        if (!check) return s1 == 0 ? 0 : static_cast<int>(m1 / s1);
        if (s1 == 0 || 0.47 * static_cast<double>(s2) > static_cast<double>(s1)) return -1;
        const int mean = static_cast<int>(m1 / s1);
        if (mean <= 48 || mean >= 128) return -1;
        return 8 * Sum(h, 0, mean - 21) >= s1 ? mean : -1;
    }

    void SmoothRegion(Rect rect, const Bytes& from, Bytes& to) const {
        ForRect(rect, [&](int x, int y) {
            to[At(x, y)] = from[At(x, y)];
            if (y == 0 || y == height - 1 || x == 0 || x == rowBytes - 1) return;
            int sum = 0;
            ForRect({x - 1, y - 1, x + 1, y + 1}, [&](int i, int j) { sum += from[At(i, j)]; });
            to[At(x, y)] = static_cast<std::uint8_t>(sum / 9);
        });
    }

    void SharpenRegion(Rect rect, const Bytes& from, Bytes& to, float k) const {
        ForRect(rect, [&](int x, int y) {
            to[At(x, y)] = from[At(x, y)];
            if (y == 0 || y == height - 1 || x == 0 || x == width - 1) return;
            int sum = -from[At(x, y)];
            ForRect({x - 1, y - 1, x + 1, y + 1},
                    [&](int i, int j) { sum += At(i, j) < from.size() ? from[At(i, j)] : 0; });
            const float product = k * static_cast<float>(from[At(x, y)]);
            const float v = product - static_cast<float>(sum);
            to[At(x, y)] = static_cast<std::uint8_t>(std::clamp(v, 0.0f, 255.0f));
        });
    }

    int ThresholdRegion(Rect rect, int t, const Bytes& from, Bytes& to, bool force) const {
        int dark = 0, light = 0;
        ForRect(rect, [&](int x, int y) {
            const std::size_t i = At(x, y);
            if (from[i] < t) {
                to[i] = 0;
                ++dark;
            } else if (to[i] != 0 || force) {
                to[i] = 255;
                ++light;
            }
        });
        return light * 1.1 < dark ? 2 : 0;
    }

    void Merge(Rect rect, Bytes& a, const Bytes& c) const {
        ForRect(rect, [&](int x, int y) { a[At(x, y)] = a[At(x, y)] == 0 && c[At(x, y)] == 0 ? 0 : 255; });
    }

    int CountStrokeEndsOf(const Bytes& buffer) const {
        Bytes edges(src.size(), 0), mask(src.size());
        SobelMagnitude(buffer, edges, Whole(), false);
        EdgeLevelLoop(edges, ContrastLevel(), mask);
        return CountStrokeEnds(mask);
    }

    void FindSideBorders(int* left, int* right) const {
        const auto pixel = [&](int x, int y) {
            return x < 0 || x >= width || y < 0 || y >= height ? 0 : static_cast<int>(src[At(x, y)]);
        };
        const int d = width / 8;
        struct Side {
            double sumX = 0, count = 0;
            int misses = 0, px = 0;
            bool valid = true;
            std::optional<int> fallback;
        } sides[2];
        for (int k = 0; k < 2; ++k) {
            Side& side = sides[k];
            for (int y = 2 * height / 4; y < 7 * height / 8; ++y) {
                int x = k == 0 ? 0 : width - 1;
                const int step = k == 0 ? 1 : -1;
                bool found = false;
                for (; k == 0 ? x < d : x > width - d; x += step) {
                    if (std::abs(pixel(x + step, y) - pixel(x, y)) > 20) {
                        found = true;
                        break;
                    }
                }
                bool accept = found && side.count == 0;
                if (!found) {
                    ++side.misses;
                } else if (side.count > 0) {
                    if (std::abs(side.px - x) > 20) ++side.misses;
                    if (std::abs(side.px - x) < 20) accept = true;
                }
                if (accept) {
                    side.sumX += x;
                    side.count += 1;
                    side.px = x;
                }
                if (side.misses > 5) {
                    side.valid = false;
                    if (side.count > 0) side.fallback = Trunc(side.sumX / side.count);
                }
            }
        }
        *left = sides[0].valid && sides[0].count > 0 ? Trunc(sides[0].sumX / sides[0].count) : 0;
        *right = sides[1].valid && sides[1].count > 0 ? Trunc(width - sides[1].sumX / sides[1].count) : 0;
        if (*right == 0 && *left == 0) {
            if (sides[1].fallback && width - *sides[1].fallback < 50) {
                *right = width - *sides[1].fallback;
            } else if (sides[0].fallback && *sides[0].fallback < 50) {
                *left = *sides[0].fallback;
            }
        } else if (*right > 50) {
            *right = 0;
        } else if (*left > 50) {
            *left = 0;
        }
    }

    void PaintPageMargins() {
        int left, right;
        FindSideBorders(&left, &right);
        const int l = left != 0 ? left + 13 : 15, r = right != 0 ? right + 13 : 15;
        ForRect(Whole(), [&](int x, int y) {
            if (x <= l - 1 || x >= width - r + 1 || y <= 7 || y >= height - 8) src[At(x, y)] = 200;
        });
    }

    void BuildPreMask(Bytes& a, bool& smoothed) {
        Bytes b(src.size(), 0);
        Histogram h = Count(Whole(), src);
        const int level = ContrastLevel();
        SobelMagnitude(src, b, Whole(), false);
        EdgeLevelLoop(b, level, a);
        const int c = strokeEndCount = CountStrokeEnds(a);
        PaintPageMargins();
        smoothed = false;
        const auto global = [&](int t) {
            for (std::size_t i = 0; i < a.size(); ++i) a[i] = src[i] > t ? 255 : 0;
            globalThresholdUsed = true;
        };
        const auto edge = [&](int t) {
            for (std::size_t i = 0; i < a.size(); ++i) a[i] = b[i] >= t ? 0 : 255;
        };
        const auto smooth = [&] {
            SmoothRegion(Whole(), src, a);
            smoothed = true;
            SobelMagnitude(a, b, Whole(), false);
        };
        Shares s;
        if (c > 4500) {
            useAltRegionRule = true;
            const int k = Classify(h, s);
            const int t = Binarizer::IsodataThreshold(h.data());
            const int t2 = c > 9500 ? t * 6 / 10 : t * 9 / 10;
            if (k % 2 == 1) {
                if (k == 5 || k == 7) {
                    edge(t2);
                    if (CountStrokeEnds(a) <= 1800) return;
                }
            } else {
                if (s.low < 0.1) useAltRegionRule = false;
                smooth();
                edge(t2);
                if (CountStrokeEnds(a) <= 1800) {
                    edge(127);
                    return;
                }
            }
            global(t2);
            if (s.high > 0.7) useAltRegionRule = sharpenAllowed = false;
        } else if (c > 2900) {
            h = Count(Whole(), src);
            if (DarkMeanCheck(h, true) > 0) {
                if (Classify(h, s) == 1) {
                    sharpenAllowed = false;
                    darkTextHint = true;
                }
                return;
            }
            const int k = Classify(h, s);
            const int t = Binarizer::IsodataThreshold(h.data());
            if (k == 1) {
                global(t);
            } else if (k == 0 && c > 3700) {
                smooth();
                edge(127);
            } else if (k == 0) {
                if (s.mid > 0.12) global(t + 10);
            } else {
                smoothed = true;
            }
        } else {
            const int k = Classify(h, s);
            const int t = Binarizer::IsodataThreshold(h.data());
            if (k == 1 && 0.14 < s.low && s.low < 0.15) {
                global(t);
            } else if (k == 0 && s.low > 0.1 && s.mid > 0.1) {
                global(t);
            }
        }
    }

    static std::vector<Component> LabelRuns(const std::uint8_t* mask, int columns, int rows) {
        std::vector<int> previous(columns, 0), current(columns, 0);
        std::vector<Component> chain;  // label n is at n - 1
        for (int y = 0; y < rows; ++y) {
            const std::uint8_t* row = mask + static_cast<std::size_t>(y) * columns;
            previous = current;
            std::fill(current.begin(), current.end(), 0);
            for (int x = 0; x < columns;) {
                if (row[x] != 0) {
                    ++x;
                    continue;
                }
                const int x0 = x;
                int lab = 0;
                for (; x < columns && row[x] == 0; ++x) {
                    const int p = previous[x];
                    if (p == 0) {
                        if (lab != 0) current[x] = lab;
                    } else if (lab == 0) {
                        lab = p;
                        std::fill(current.begin() + x0, current.begin() + x + 1, lab);
                    } else if (p != lab) {
                        Component &from = chain[p - 1], &into = chain[lab - 1];
                        into.area += from.area;
                        into.runEnds += from.runEnds;
                        into.runs.insert(into.runs.end(), from.runs.begin(), from.runs.end());
                        from = {};
                        std::replace(previous.begin(), previous.end(), p, lab);
                        std::replace(current.begin(), current.end(), p, lab);
                    } else {
                        current[x] = lab;
                    }
                }
                if (lab == 0) {
                    chain.emplace_back();
                    lab = static_cast<int>(chain.size());
                    std::fill(current.begin() + x0, current.begin() + x, lab);
                }
                Component& component = chain[lab - 1];
                component.runs.push_back({x0, x - 1, y});
                component.area += x - x0;
                component.runEnds += 2;
            }
        }
        return chain;
    }

    std::vector<Record> FindTextComponents(const Bytes& mask) const {
        std::vector<Record> records;
        for (const Component& component : LabelRuns(mask.data(), rowBytes / 2, height)) {
            float area = 0, sumX = 0, sumY = 0;
            int runs = 0;
            Record r{0, 0, 99999, -1, -1, 99999, 0, 0};
            for (const Run& run : component.runs) {
                const int x0 = 2 * run.x0, x1 = 2 * run.x1, rl = x1 - x0 + 1;
                area += static_cast<float>(rl);
                sumX += static_cast<float>((x0 + x1) * rl / 2);
                sumY += static_cast<float>(rl * run.y);
                ++runs;
                r.left = std::min(r.left, x0);
                r.right = std::max(r.right, x1);
                r.top = std::min(r.top, run.y);
                r.bottom = std::max(r.bottom, run.y);
            }
            if (runs == 0) continue;
            const int w = r.right - r.left, h = r.bottom - r.top;
            int dark = 0, light = 0;
            ForRect({r.left, r.top, r.right, r.bottom},
                    [&](int x, int y) { ++(src[At(x, y)] <= 127 ? dark : light); });
            const bool text = runs >= 5 && area >= 33 && h < 2 * height / 3 && w < rowBytes / 2;
            const bool wide = w >= rowBytes / 2 && runs > 5 && area > 33 && h > 10 && globalThresholdUsed &&
                              light * 1.1 < dark;
            if (!text && !wide) continue;
            r.centreX = Trunc(sumX / area + 0.5);
            r.centreY = Trunc(sumY / area + 0.5);
            r.area = Trunc(area);
            records.push_back(r);
        }
        const auto byY = [](const Record& a, const Record& b) { return a.centreY < b.centreY; };
        const auto byX = [](const Record& a, const Record& b) { return a.centreX < b.centreX; };
        std::stable_sort(records.begin(), records.end(), byY);
        std::vector<std::size_t> starts{0};
        for (std::size_t i = 1; i < records.size() && starts.size() < 64; ++i) {
            if (std::abs(records[i].centreY - records[i - 1].centreY) > 20) starts.push_back(i);
        }
        for (std::size_t g = 0; g < starts.size(); ++g) {
            const std::size_t end = g + 1 < starts.size() ? starts[g + 1] : records.size();
            std::stable_sort(records.begin() + starts[g], records.begin() + end, byX);
            for (std::size_t i = starts[g]; i < end; ++i) records[i].group = static_cast<int>(g);
        }
        return records;
    }

    std::vector<Region> BuildRegions(const std::vector<Record>& records, Bytes& c, Bytes& a, bool smoothed) {
        std::vector<Region> list;
        for (std::size_t i = 0; i < records.size();) {
            const int group = records[i].group;
            Region region{65535, 0, 0, 65535, false};
            for (bool first = true; i < records.size() && records[i].group == group; ++i) {
                const int x0 = std::max(records[i].left - 10, 0);
                region.left = std::min(region.left, x0);
                if (!first && x0 - region.right > 33) break;
                first = false;
                region.right = std::max(region.right, std::min(records[i].right + 10, rowBytes - 1));
                region.top = std::min(region.top, std::max(records[i].top - 10, 0));
                region.bottom = std::max(region.bottom, std::min(records[i].bottom + 10, height - 1));
            }
            list.push_back(region);
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            for (std::size_t j = i + 1; j < list.size(); ++j) {
                Region &r1 = list[i], &r2 = list[j];
                const Rect both{std::max(r1.left, r2.left), std::max(r1.top, r2.top),
                                std::min(r1.right, r2.right), std::min(r1.bottom, r2.bottom)};
                if (both.x1 < both.x0 || both.y1 < both.y0) continue;
                const int inter = both.Area(), a1 = r1.AsRect().Area(), a2 = r2.AsRect().Area();
                const Region joint{std::min(r1.left, r2.left), std::max(r1.right, r2.right),
                                   std::max(r1.bottom, r2.bottom), std::min(r1.top, r2.top), 0};
                if (inter >= a1) {
                    r1.flag = true;
                    break;
                }
                if (a1 <= a2 && inter >= 3 * a1 / 5) {
                    r1.flag = true;
                    r2 = {joint.left, joint.right, joint.bottom, joint.top, r2.flag};
                } else if (a1 > a2 && inter >= 3 * a2 / 5) {
                    r2.flag = true;
                    r1 = {joint.left, joint.right, joint.bottom, joint.top, r1.flag};
                }
            }
        }
        std::vector<Region> results;
        for (const Region& region : list) {
            if (region.flag) continue;
            results.push_back(region);
            results.back().flag = useAltRegionRule ? RuleAlt(region.AsRect(), a, smoothed)
                                                   : Rule(region.AsRect(), c, a, smoothed);
        }
        results.push_back({0, 0, 0, 0, 0});
        return results;
    }

    void CleanRegion(Rect& rect, int mode, Bytes& a) const {
        if (mode == 0) {
            rect = {std::max(rect.x0, 1), std::max(rect.y0, 1), std::min(rect.x1, rowBytes - 2),
                    std::min(rect.y1, height - 2)};
            const auto black = [&](int x, int y) { return a[At(x, y)] <= 1; };
            ForRect(rect, [&](int x, int y) {
                std::uint8_t& value = a[At(x, y)];
                if (value == 0) {
                    value = 1;
                } else if (value == 255) {
                    const bool left = black(x - 1, y), right = black(x + 1, y);
                    const bool above = black(x, y - 1), below = black(x, y + 1);
                    const bool fill =
                        ((above || below) && left && right) || ((left || right) && above && below);
                    value = fill ? 1 : 254;
                }
            });
        } else if (mode == 1) {
            ForRect(rect, [&](int x, int y) {
                std::uint8_t& value = a[At(x, y)];
                value = value == 0 ? 1 : value == 255 ? 254 : value;
            });
        }
    }

    void FinishRegions(Bytes& a, Bytes* c, std::vector<Region>& results) const {
        for (const Region& node : results) {
            Rect rect = node.AsRect();
            CleanRegion(rect, node.flag % 3, a);
            if (node.flag < 3 || c == nullptr) continue;
            SobelMagnitude(src, *c, rect, true);
            ForRect(rect, [&](int x, int y) {
                const std::size_t i = At(x, y);
                a[i] = (*c)[i] == 0 || a[i] == 1 ? 1 : 254;
            });
        }
    }

    bool RefineByRegions(Bytes& a, bool smoothed) {
        const std::size_t n = a.size();
        for (std::size_t k = 0; 2 * k < n; ++k) a[k] = a[2 * k];
        const std::vector<Record> records = FindTextComponents(a);
        if (records.empty()) return false;
        Bytes c(n, 0);
        std::fill(a.begin(), a.end(), 255);
        std::vector<Region> results = BuildRegions(records, c, a, smoothed);
        std::fill(c.begin(), c.end(), 255);
        FinishRegions(a, &c, results);
        return true;
    }

    std::optional<Bytes> Binarize() {
        if (width == 0 || height == 0) return std::nullopt;
        Bytes a(src.size());
        bool smoothed;
        BuildPreMask(a, smoothed);
        if (!RefineByRegions(a, smoothed)) return std::nullopt;
        return a;
    }

    std::optional<Bytes> BinarizeBlock() {
        if (width == 0 || height == 0) return std::nullopt;
        Bytes c(src.size(), 0), a(src.size(), 255);
        std::vector<Region> node{{0, width - 1, height - 1, 0, Rule(Whole(), c, a, false)}};
        FinishRegions(a, nullptr, node);
        return a;
    }

    std::optional<Bytes> BinarizeSharp() {
        if (width == 0 || height == 0) return std::nullopt;
        Bytes c(src.size(), 255), a(src.size(), 255);
        std::vector<Region> node{{0, width - 1, height - 1, 0, RuleSharp(Whole(), c, a)}};
        FinishRegions(a, &c, node);
        return a;
    }

    // What a rule does over its rectangle, with the histogram counted last.
    struct Tools {
        const EdgeRegionReference& page;
        Rect rect;
        Histogram h{};

        void hist(const Bytes& x) { h = page.Count(rect, x); }
        int iso() const { return Binarizer::IsodataThreshold(h.data()); }
        int otsu(int high) const { return Binarizer::OtsuThreshold(h.data(), 0, high); }
        int thr(const Bytes& x, Bytes& y, int t, bool force) const {
            return page.ThresholdRegion(rect, t, x, y, force);
        }
    };

    int Rule(Rect rect, Bytes& c, Bytes& a, bool smoothed) {
        Tools tools{*this, rect};
        const Histogram& h = tools.h;
        tools.hist(src);
        const auto area = static_cast<float>(rect.Area());
        const float r = static_cast<float>(Sum(h, 0, 99)) / area,
                    q = static_cast<float>(Sum(h, 0, 127)) / area;
        const int cls = r <= 0.02 ? 0 : r <= 0.48 ? (q > 0.6 ? 3 : 1) : r <= 0.8 ? (q <= 0.8 ? 2 : 3) : 3;
        const float k = r > 0.1 ? 10.0f : r >= 0.038 ? 9.8f : 9.6f;
        int res;
        switch (cls) {
            case 0: return tools.thr(src, a, tools.otsu(256), false) == 2 ? 2 : 1;
            case 1:
                if (darkTextHint && sharpenAllowed) {
                    SharpenRegion(rect, src, c, k);
                    tools.hist(c);
                    res = tools.thr(c, a, tools.iso() - 30, true);
                } else if (darkTextHint) {
                    const int m = DarkMeanCheck(h, true);
                    int t = m > 0 ? tools.otsu(m) : tools.otsu(256);
                    if (t < 50) t += 20;
                    res = tools.thr(src, a, t, true);
                } else if (sharpenAllowed) {
                    SharpenRegion(rect, src, c, k);
                    tools.hist(c);
                    res = tools.thr(
                        c, a, r > 0.1 ? std::min(tools.iso() + 30, 250) : std::min(tools.iso() + 40, 250),
                        false);
                    if (smoothed && r >= 0.038) {
                        SmoothRegion(rect, src, c);
                        tools.hist(c);
                        tools.thr(c, c, tools.iso() + 15, true);
                        Merge(rect, a, c);
                    }
                } else {
                    res = tools.thr(src, a, Trunc(tools.iso() * 0.8), false);
                }
                return res == 2 ? 2 : 0;
            case 2:
                res = tools.thr(src, a, tools.iso(), false);
                if (res == 2) return 2;
                if (r < 0.6) {
                    SharpenRegion(rect, src, a, 9.8f);
                    tools.hist(a);
                    tools.thr(a, a, std::min(tools.iso() + 20, 250), false);
                }
                if (smoothed) {
                    SmoothRegion(rect, src, c);
                    tools.hist(c);
                    tools.thr(c, c, tools.iso() + 10, false);
                    Merge(rect, a, c);
                } else if (darkTextHint) {
                    tools.hist(src);
                    const int m = DarkMeanCheck(h, true);
                    tools.thr(src, c, m > 0 ? tools.otsu(m) : tools.otsu(256), false);
                    Merge(rect, a, c);
                }
                return 0;
            default:
                res = tools.thr(src, a, tools.iso(), false);
                if (res == 2) return 2;
                const int m = DarkMeanCheck(h, true);
                if (m > 0) return tools.thr(src, a, tools.otsu(m), false) + 3;
                return tools.thr(src, a, tools.iso(), false);
        }
    }

    int RuleAlt(Rect rect, Bytes& a, bool smoothed) {
        Tools tools{*this, rect};
        const Histogram& h = tools.h;
        tools.hist(src);
        const auto area = static_cast<float>(rect.Area());
        const float r = static_cast<float>(Sum(h, 0, 99)) / area,
                    q = static_cast<float>(Sum(h, 0, 127)) / area;
        Shares s;
        if (r <= 0.02) return tools.thr(src, a, tools.otsu(256), false) == 2 ? 2 : 1;
        if (r <= 0.48 && q <= 0.6 && q / r <= 2.0) {
            if (!smoothed) {
                const bool large = rect.x1 - rect.x0 + 1 > 700 && rect.y1 - rect.y0 + 1 > 500;
                tools.thr(src, a, large ? Trunc(tools.iso() * 0.7) : tools.iso() - 20, false);
                return 0;
            }
            SmoothRegion(rect, src, a);
            tools.hist(a);
            const int k = Classify(h, s);
            int t;
            if (k == 4) {
                t = tools.otsu(s.high <= 0.2 ? 170 : tools.iso()) + 10;
            } else if (k == 5) {
                t = DarkMeanCheck(h, false);
            } else {
                t = k == 1 || k == 3 ? Trunc(tools.iso() * 0.85) : tools.otsu(tools.iso());
            }
            tools.thr(a, a, t, true);
            return 0;
        }
        if (r > 0.48 && r <= 0.8 && q <= 0.8) {
            if (tools.thr(src, a, tools.iso(), false) == 2) return 2;
            if (smoothed) {
                SmoothRegion(rect, src, a);
                tools.hist(a);
                tools.thr(a, a, tools.iso() + 10, true);
            }
            return 0;
        }
        const int k = Classify(h, s);
        const int t = k == 4   ? tools.otsu(DarkMeanCheck(h, false))
                      : k == 5 ? DarkMeanCheck(h, false)
                               : (k == 1 || k == 3 ? Trunc(tools.iso() * 0.85) : tools.iso());
        return tools.thr(src, a, t, false);
    }

    int RuleSharp(Rect rect, Bytes& c, Bytes& a) {
        Tools tools{*this, rect};
        const Histogram& h = tools.h;
        tools.hist(src);
        const double s = static_cast<double>(Sum(h, 0, 127)) / rect.Area();
        if (s > 0.8) {
            const int m = DarkMeanCheck(h, true);
            if (m > 0) return tools.thr(src, a, tools.otsu(m), false) + 3;
            return tools.thr(src, a, tools.iso(), false);
        }
        Shares shares;
        SmoothRegion(rect, src, c);
        tools.hist(c);
        const int res = tools.thr(c, a, tools.iso(), true);
        if (res == 2) {
            tools.thr(c, a, tools.iso() + 10, true);
            edgeCutOverride = 250;
            return 5;
        }
        Classify(h, shares);
        if (s <= 0.15) {
            if (shares.high >= 0.8) return res;
            const int n = CountStrokeEndsOf(src);
            if (n <= 1950) return res;
            SharpenRegion(rect, c, a, n > 6000 ? 9.9f : n > 3000 ? 9.8f : 9.6f);
            tools.hist(a);
            tools.thr(a, a, s < 0.06 ? tools.iso() + 40 : tools.iso(), true);
            return res;
        }
        if (shares.high >= 0.6) return res;
        const int n = CountStrokeEndsOf(src);
        if (n < 2400 || n > 6000) {
            SharpenRegion(rect, c, a, n < 2400 ? 10.1f : 9.8f);
            tools.hist(a);
            return tools.thr(a, a, tools.iso(), true);
        }
        tools.hist(c);
        return tools.thr(c, a, std::min(tools.iso(), 250), true);
    }
};

}  // namespace tavrix::test
