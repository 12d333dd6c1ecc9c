// SPDX-License-Identifier: MIT
#include "straighten/Sheet.h"

#include <algorithm>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace host {
namespace {

constexpr double kLongSide = 900;                       // pixels of the picture that is searched
constexpr double kMinSegment = 0.015, kMinLine = 0.12;  // of the diagonal
constexpr double kMinShare = 0.1;                       // of the picture that a sheet covers
constexpr std::size_t kMostLines = 16;                  // of each direction, the picture's borders included
constexpr double kMostTurn = 50;                        // degrees from level or upright
constexpr double kMinSupport = 0.7;                     // of a side that is an edge
constexpr double kMinCorner = 50;                       // degrees
constexpr double kMostTaper = 1.8;                      // between opposite sides
constexpr int kMostMarks = 70;                          // pixels outside that are dirt and grain

double SineOf(double degrees) {
    return std::sin(degrees * std::numbers::pi / 180);
}

double LengthOf(cv::Point2d way) {
    return std::hypot(way.x, way.y);
}

struct Segment {
    cv::Point2d from, to;
    double Length() const { return LengthOf(to - from); }
};

// Where a x + b y = c; (a, b) is a unit vector.
struct Line {
    double a, b, c;
    double length;  // of the segments on it; 0 for the picture's border, which is no edge
    double DistanceOf(cv::Point2d p) const { return std::fabs(a * p.x + b * p.y - c); }
};

cv::Point2d Crossing(const Line& l, const Line& m) {
    const double d = l.a * m.b - l.b * m.a;
    return {(l.c * m.b - l.b * m.c) / d, (l.a * m.c - l.c * m.a) / d};
}

Line LineThrough(const std::vector<Segment>& segments) {
    constexpr double kStep = 4;  // pixels
    std::vector<cv::Point2f> points;
    double length = 0;
    for (const Segment& s : segments) {
        length += s.Length();
        const int steps = std::max(1, static_cast<int>(s.Length() / kStep));
        for (int i = 0; i <= steps; ++i) points.emplace_back(s.from + (s.to - s.from) * (1.0 * i / steps));
    }
    cv::Vec4f fit;  // direction and a point
    cv::fitLine(points, fit, cv::DIST_HUBER, 0, 0.01, 0.01);
    const double a = -fit[1], b = fit[0];
    return {a, b, a * fit[2] + b * fit[3], length};
}

// The lines that long edges lie on, the best covered first.
std::vector<Line> LinesOf(const EdgeMap& map) {
    const double near = 0.004 * map.Diagonal(), tilt = SineOf(2);
    std::vector<Segment> segments;
    for (const cv::Vec4f& s : map.Segments()) {
        const Segment segment = {{s[0], s[1]}, {s[2], s[3]}};
        if (segment.Length() >= kMinSegment * map.Diagonal()) segments.push_back(segment);
    }
    std::sort(segments.begin(), segments.end(),
              [](const Segment& s, const Segment& t) { return s.Length() > t.Length(); });
    std::vector<Line> lines;
    while (!segments.empty()) {
        const Line seed = LineThrough({segments.front()});
        std::vector<Segment> members = {segments.front()};
        segments.erase(segments.begin());
        std::erase_if(segments, [&](const Segment& s) {
            const cv::Point2d along = (s.to - s.from) / s.Length();
            const bool isOn = seed.DistanceOf(s.from) < near && seed.DistanceOf(s.to) < near &&
                              std::fabs(along.x * seed.a + along.y * seed.b) < tilt;
            if (isOn) members.push_back(s);
            return isOn;
        });
        const Line line = LineThrough(members);
        if (line.length >= kMinLine * map.Diagonal()) lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end(), [](const Line& l, const Line& m) { return l.length > m.length; });
    return lines;
}

double AreaOf(const Quad& q) {
    return ((q[2] - q[0]).cross(q[3] - q[1])) / 2;
}

// A shape that a sheet can have in a photograph.
bool IsPlausible(const Quad& q, cv::Size size) {
    const double slack = 0.01 * std::hypot(size.width, size.height);
    if (q[0].x > q[1].x || q[0].y > q[3].y) return false;  // turned over
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2d in = q[i] - q[(i + 3) % 4], out = q[(i + 1) % 4] - q[i];
        const double corner = std::atan2(in.cross(out), in.dot(out)) * 180 / std::numbers::pi;
        const bool isNear =
            q[i].x > -slack && q[i].y > -slack && q[i].x < size.width + slack && q[i].y < size.height + slack;
        if (!isNear || corner < kMinCorner || corner > 180 - kMinCorner) return false;
    }
    for (std::size_t i = 0; i < 2; ++i) {
        const double one = LengthOf(q[i + 1] - q[i]), other = LengthOf(q[(i + 3) % 4] - q[i + 2]);
        if (std::max(one, other) > kMostTaper * std::min(one, other)) return false;
    }
    return AreaOf(q) >= kMinShare * size.area();
}

struct Candidate {
    Quad quad;
    double score;
};

// All plausible shapes whose sides are edges or the picture's border, the best first.
class Search {
  public:
    explicit Search(const EdgeMap& edgeMap) : map(edgeMap) {
        const cv::Size size = map.Size();
        level = {{0, 1, 0, 0}, {0, 1, static_cast<double>(size.height), 0}};
        upright = {{1, 0, 0, 0}, {1, 0, static_cast<double>(size.width), 0}};
        for (const Line& line : LinesOf(map)) {
            if (std::fabs(line.a) < SineOf(kMostTurn) && level.size() < kMostLines) level.push_back(line);
            if (std::fabs(line.b) < SineOf(kMostTurn) && upright.size() < kMostLines) upright.push_back(line);
        }
    }

    std::vector<Candidate> Run() {
        for (std::size_t top = 0; top < level.size(); ++top) {
            for (std::size_t bottom = 0; bottom < level.size(); ++bottom) {
                for (std::size_t left = 0; left < upright.size(); ++left) {
                    for (std::size_t right = 0; right < upright.size(); ++right) {
                        if (top != bottom && left != right) Try(top, right, bottom, left);
                    }
                }
            }
        }
        std::sort(found.begin(), found.end(),
                  [](const Candidate& c, const Candidate& d) { return c.score > d.score; });
        return std::move(found);
    }

  private:
    using Supports = std::array<std::array<std::array<float, kMostLines>, kMostLines>, kMostLines>;

    void Try(std::size_t top, std::size_t right, std::size_t bottom, std::size_t left) {
        const Quad q = {Crossing(level[top], upright[left]), Crossing(level[top], upright[right]),
                        Crossing(level[bottom], upright[right]), Crossing(level[bottom], upright[left])};
        if (!IsPlausible(q, map.Size())) return;
        const std::array sides = {
            SupportOf(level[top], levelSupports[top][left][right], q[0], q[1]),
            SupportOf(upright[right], uprightSupports[right][top][bottom], q[1], q[2]),
            SupportOf(level[bottom], levelSupports[bottom][right][left], q[2], q[3]),
            SupportOf(upright[left], uprightSupports[left][bottom][top], q[3], q[0]),
        };
        double score = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            if (sides[i] < kMinSupport && sides[i] != kBorder) return;
            // Parts of a side that are no edge count against it.
            if (sides[i] != kBorder) score += (sides[i] - 0.5) * LengthOf(q[(i + 1) % 4] - q[i]);
        }
        if (score > 0) found.push_back({q, score});
    }

    // known: 0, or one more than what has been measured before.
    double SupportOf(const Line& line, float& known, cv::Point2d from, cv::Point2d to) const {
        if (line.length == 0) return kBorder;
        if (known == 0) known = static_cast<float>(1 + map.SupportOf(from, to));
        return known - 1;
    }

    static constexpr double kBorder = -1;

    const EdgeMap& map;
    std::vector<Line> level, upright;
    Supports levelSupports = {}, uprightSupports = {};  // by the line and the two that cross it
    std::vector<Candidate> found;
};

}  // namespace

std::optional<Quad> FindSheet(const cv::Mat3b& picture, std::string& whyNot) {
    const double factor = std::min(1.0, kLongSide / std::max(picture.cols, picture.rows));
    cv::Mat3b reduced = picture;
    if (factor < 1) cv::resize(picture, reduced, {}, factor, factor, cv::INTER_AREA);
    const EdgeMap map(reduced);
    const std::vector<Candidate> found = Search(map).Run();
    const auto best = std::find_if(found.begin(), found.end(), [&map](const Candidate& candidate) {
        return map.MarksOutside(candidate.quad) <= kMostMarks;
    });
    if (best == found.end()) {
        whyNot = found.empty() ? "no sheet with clear edges" : "there may be text beyond the edges found";
        return std::nullopt;
    }
    Quad quad;
    for (std::size_t i = 0; i < 4; ++i) {
        quad[i] = {std::clamp(best->quad[i].x / factor, 0.0, static_cast<double>(picture.cols)),
                   std::clamp(best->quad[i].y / factor, 0.0, static_cast<double>(picture.rows))};
    }
    return quad;
}

}  // namespace host
