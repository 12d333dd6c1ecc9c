// SPDX-License-Identifier: MIT
#include "straighten/Straighten.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <utility>

#include "straighten/Sheet.h"
#include "straighten/TextDirection.h"

namespace host {
namespace {

constexpr double kAnalysedSide = 1600;  // pixels of the picture that is looked at
constexpr int kMiddleGray = 128;
constexpr int kLeastSide = 32;    // pixels; less shows neither lines nor sheets
constexpr int kMostSide = 32766;  // that OpenCV resamples

// Where points of the picture go, and how large the result is. Points count from the outer corner of the top
// left pixel.
struct Placement {
    cv::Matx33d matrix = cv::Matx33d::eye();
    double width, height;

    cv::Size Size() const { return {cvRound(width), cvRound(height)}; }
    bool IsWhole() const { return matrix == cv::Matx33d::eye(); }
};

cv::Matx33d Moved(double x, double y) {
    return {1, 0, x, 0, 1, y, 0, 0, 1};
}

// Rows counted from the other end.
cv::Matx33d TurnedOver(double height) {
    return {1, 0, 0, 0, -1, height, 0, 0, 1};
}

// The stored rows run from the bottom up.
cv::Mat StoredMat(const HostImage& image) {
    return {image.Height(), image.Width(), image.BitCount() == 24 ? CV_8UC3 : CV_8UC1, image.Record().bits,
            image.RowBytes()};
}

HostImage Place(const HostImage& image, const Placement& placement) {
    const cv::Size size = placement.Size();
    HostImage result(size.width, size.height, image.BitCount());
    // OpenCV counts from the middle of the first stored pixel.
    const cv::Matx33d matrix = Moved(-0.5, -0.5) * TurnedOver(size.height) * placement.matrix *
                               TurnedOver(image.Height()) * Moved(0.5, 0.5);
    cv::Mat target = StoredMat(result);
    // Corners that a turn brings in continue the border: white ones would be new edges.
    cv::warpPerspective(StoredMat(image), target, matrix, size, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
    return result;
}

HostImage ToBits(const HostImage& gray) {
    HostImage bits(gray.Width(), gray.Height(), 1);
    for (int y = 0; y < gray.Height(); ++y) {
        const std::uint8_t* from = gray.TopRow(y);
        std::uint8_t* to = bits.TopRow(y);
        for (int x = 0; x < gray.Width(); ++x) {
            if (from[x] >= kMiddleGray) to[x / 8] = static_cast<std::uint8_t>(to[x / 8] | 0x80 >> x % 8);
        }
    }
    return bits;
}

// Cuts to a shape and makes it a rectangle.
Placement CutTo(Quad quad) {
    constexpr double kStraight = 1.5;  // pixels; a shape that is less off is cut along whole pixels
    const auto side = [&quad](int a, int b) {
        return std::hypot(quad[b].x - quad[a].x, quad[b].y - quad[a].y);
    };
    const double left = std::round((quad[0].x + quad[3].x) / 2),
                 right = std::round((quad[1].x + quad[2].x) / 2);
    const double top = std::round((quad[0].y + quad[1].y) / 2),
                 bottom = std::round((quad[2].y + quad[3].y) / 2);
    const Quad straight = {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
    double off = 0;
    for (std::size_t i = 0; i < 4; ++i) off = std::max(off, cv::norm(quad[i] - straight[i]));
    if (off < kStraight) return {Moved(-left, -top), right - left, bottom - top};
    const double width = std::round(std::max(side(0, 1), side(3, 2)));
    const double height = std::round(std::max(side(0, 3), side(1, 2)));
    const std::array<cv::Point2f, 4> from = {quad[0], quad[1], quad[2], quad[3]};
    const std::array<cv::Point2f, 4> to = {cv::Point2d(0, 0), cv::Point2d(width, 0),
                                           cv::Point2d(width, height), cv::Point2d(0, height)};
    return {cv::Matx33d(cv::getPerspectiveTransform(from.data(), to.data())), width, height};
}

// Takes the blurred rim of the sides away that are no border of the picture.
Placement Trimmed(Placement placement, const Quad& sheet, const HostImage& image) {
    constexpr double kRim = 0.003;  // of the longer side
    const double rim = std::max(1.0, std::round(kRim * std::max(placement.width, placement.height)));
    const auto rimOf = [&](std::size_t from, std::size_t to) {
        const cv::Point2d a = sheet[from], b = sheet[to];
        const bool isBorder = (a.x == b.x && (a.x == 0 || a.x == image.Width())) ||
                              (a.y == b.y && (a.y == 0 || a.y == image.Height()));
        return isBorder ? 0 : rim;
    };
    const double left = rimOf(3, 0), top = rimOf(0, 1), right = rimOf(1, 2), bottom = rimOf(2, 3);
    return {Moved(-left, -top) * placement.matrix, placement.width - left - right,
            placement.height - top - bottom};
}

// Turns clockwise; the result holds all of it.
Placement Turned(const Placement& before, const TextDirection& direction) {
    Placement after = before;
    for (int i = 0; i < direction.quarters; ++i) {
        after.matrix = cv::Matx33d(0, -1, after.height, 1, 0, 0, 0, 0, 1) * after.matrix;
        std::swap(after.width, after.height);
    }
    if (direction.degrees == 0) return after;
    const double angle = direction.degrees * std::numbers::pi / 180;
    const double c = std::cos(angle), s = std::sin(angle);
    const double width = std::ceil(after.width * c + after.height * std::fabs(s));
    const double height = std::ceil(after.height * c + after.width * std::fabs(s));
    after.matrix = Moved(width / 2, height / 2) * cv::Matx33d(c, -s, 0, s, c, 0, 0, 0, 1) *
                   Moved(-after.width / 2, -after.height / 2) * after.matrix;
    after.width = width;
    after.height = height;
    return after;
}

// What a placement shows, in gray, reduced to a size for looking at, top row first.
cv::Mat1b View(const HostImage& image, const Placement& placement) {
    const double scale = std::min(1.0, kAnalysedSide / std::max(placement.width, placement.height));
    Placement reduced = placement;
    reduced.matrix = cv::Matx33d::diag({scale, scale, 1}) * placement.matrix;
    reduced.width = std::max(1.0, placement.width * scale);
    reduced.height = std::max(1.0, placement.height * scale);
    const HostImage gray = ToGray(Place(image, reduced));
    cv::Mat1b view;
    cv::flip(StoredMat(gray), view, 0);
    return view;
}

// In colour, top row first.
cv::Mat3b Whole(const HostImage& image) {
    const HostImage colour = image.BitCount() == 24 ? HostImage() : ToColour(image);
    cv::Mat3b whole;
    cv::flip(StoredMat(image.BitCount() == 24 ? image : colour), whole, 0);
    return whole;
}

std::string Described(const TextDirection& direction) {
    constexpr const char* kQuarters[] = {"", "a quarter to the right", "upside down",
                                         "a quarter to the left"};
    char degrees[32] = "";
    if (direction.degrees != 0) std::snprintf(degrees, sizeof degrees, "by %.2f degrees", direction.degrees);
    const std::string quarters = kQuarters[direction.quarters];
    if (quarters.empty() && *degrees == 0) return "not turned: the text lines do not clearly ask for it";
    return "turned " + quarters + (quarters.empty() || *degrees == 0 ? "" : " and ") + degrees;
}

std::string Described(const Quad& sheet) {
    std::string text = "cropped to the sheet with corners";
    for (const cv::Point2d& corner : sheet) {
        char place[48];
        std::snprintf(place, sizeof place, " %.1f,%.1f", corner.x + 0.0, corner.y + 0.0);  // no -0.0
        text += place;
    }
    return text;
}

Picture Straightened(Picture page, const StraightenOptions& options, std::string& remark) {
    const auto [shorter, longer] = std::minmax({page.image.Width(), page.image.Height()});
    if (shorter < kLeastSide || longer > kMostSide) {
        remark = shorter < kLeastSide ? "left as it is: too small" : "left as it is: too long";
        return page;
    }
    cv::setNumThreads(1);  // threads are one to a picture
    const bool isOneBit = page.image.BitCount() == 1;
    if (isOneBit) page.image = ToGray(std::move(page.image));
    Placement placement = {cv::Matx33d::eye(), static_cast<double>(page.image.Width()),
                           static_cast<double>(page.image.Height())};
    if (options.crops) {
        std::string whyNot;
        const std::optional<Quad> sheet = FindSheet(Whole(page.image), whyNot);
        if (sheet) placement = Trimmed(CutTo(*sheet), *sheet, page.image);
        remark = sheet ? Described(*sheet) : "not cropped: " + whyNot;
    }
    if (options.straightens) {
        const TextDirection direction = FindTextDirection(View(page.image, placement));
        const Placement turned = Turned(placement, direction);
        const bool fits = std::max(turned.width, turned.height) <= kMostSide;
        if (fits) placement = turned;
        if (fits && direction.quarters % 2 != 0) std::swap(page.resolution.x, page.resolution.y);
        remark += (remark.empty() ? "" : "; ") +
                  (fits ? Described(direction) : std::string("not turned: too long"));
    }
    if (!placement.IsWhole()) page.image = Place(page.image, placement);
    if (isOneBit) page.image = ToBits(page.image);
    return page;
}

}  // namespace
}  // namespace host

extern "C" [[gnu::visibility("default")]] void TavrixStraighten(host::Picture& page,
                                                                const host::StraightenOptions& options,
                                                                std::string& remark) {
    page = host::Straightened(std::move(page), options, remark);
}
