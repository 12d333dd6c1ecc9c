// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "image/DibImage.h"
#include "support/DumpFolder.h"
#include "support/HostImage.h"

namespace tavrix {
namespace {

using test::HostImage;

enum Code { kEdgeMap, kOpening, kClosing, kSmooth, kSharpen, kDilate };

// A picture as the rules see it: values by position, one fixed value outside.
class Plane {
  public:
    Plane(int w, int h, int value, int beyond)
        : width(w), height(h), outside(beyond), values(std::size_t(w) * h, value) {}
    int operator()(int x, int y) const {
        return x >= 0 && x < width && y >= 0 && y < height ? values[std::size_t(y) * width + x] : outside;
    }
    int& At(int x, int y) { return values[std::size_t(y) * width + x]; }
    // Calls rule(x, y) for the new value of every position.
    template <class Rule>
    Plane Mapped(Rule rule) const {
        Plane result = *this;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) result.At(x, y) = rule(x, y);
        }
        return result;
    }
    int Sum(int cx, int cy, int radius) const {
        int sum = 0;
        for (int y = cy - radius; y <= cy + radius; ++y) {
            for (int x = cx - radius; x <= cx + radius; ++x) sum += (*this)(x, y);
        }
        return sum;
    }

    int width, height, outside;
    std::vector<int> values;
};

Plane BitsOf(const HostImage& image) {
    return Plane(image.Width(), image.Height(), 0, 1).Mapped([&](int x, int y) { return image.Bit(x, y); });
}

// Black (0) where a black pixel is near; white only where the whole square, as far as it is inside, is.
Plane Dilated(const Plane& bits, int radius) {
    const int side = 2 * radius + 1;
    return bits.Mapped([&](int x, int y) { return bits.Sum(x, y, radius) == side * side ? 1 : 0; });
}

// Black where the whole square lies inside and is black.
Plane Eroded(const Plane& bits, int radius) {
    return bits.Mapped([&](int x, int y) { return bits.Sum(x, y, radius) == 0 ? 0 : 1; });
}

Plane ExpectedBits(const Plane& bits, int code) {
    switch (code) {
        case kOpening: return Dilated(Eroded(bits, 1), 1);
        case kClosing: return Eroded(Dilated(bits, 7), 7);
        case kDilate: return Dilated(bits, 7);
        default: return bits;
    }
}

// Gray rows; `columns` of them are seen, others read 0.
Plane GrayOf(const HostImage& image, int columns) {
    return Plane(columns, image.Height(), 0, 0).Mapped([&](int x, int y) { return image.Row(y)[x]; });
}

Plane ExpectedGray(const HostImage& image, int code) {
    const int width = image.Width(), height = image.Height(), rowBytes = static_cast<int>(image.RowBytes());
    const Plane pixels = GrayOf(image, width), bytes = GrayOf(image, rowBytes);
    return pixels.Mapped([&](int x, int y) {
        const bool outerRow = y == 0 || y == height - 1;
        const bool byteFrame = outerRow || x == 0 || x == rowBytes - 1;
        const bool pixelFrame = outerRow || x == 0 || x == width - 1;
        const int value = pixels(x, y);
        if (code == kSmooth && !byteFrame) {
            return static_cast<int>(static_cast<float>(pixels.Sum(x, y, 1)) * 0.11111111f);
        }
        if (code == kSharpen && !pixelFrame) {
            const float v =
                10.0f * static_cast<float>(value) - static_cast<float>(pixels.Sum(x, y, 1) - value);
            return static_cast<int>(std::clamp(v, 0.0f, 255.0f));
        }
        if (code == kEdgeMap) {
            if (byteFrame) return 255;
            const auto& s = bytes;
            const int gy = 2 * (s(x, y - 1) - s(x, y + 1)) - s(x - 1, y + 1) - s(x + 1, y + 1) +
                           s(x - 1, y - 1) + s(x + 1, y - 1);
            const int gx = 2 * (s(x + 1, y) - s(x - 1, y)) - s(x - 1, y - 1) - s(x - 1, y + 1) +
                           s(x + 1, y - 1) + s(x + 1, y + 1);
            const int magnitude = std::min(255, static_cast<int>(std::sqrt(double(gx * gx + gy * gy))));
            return magnitude >= 127 ? 0 : 255;
        }
        return value;
    });
}

void ExpectPlane(const Plane& expected, const HostImage& image, bool asBits) {
    ASSERT_EQ(image.Width(), expected.width);
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            const int value = image.Header().biBitCount == 1 ? image.Bit(x, y) : image.Row(y)[x];
            ASSERT_EQ(value, asBits ? expected(x, y) != 0 : expected(x, y)) << x << ',' << y;
        }
    }
}

// The bits or bytes past the width.
std::vector<int> PaddingOf(const HostImage& image) {
    std::vector<int> padding;
    const int bits = image.Header().biBitCount;
    for (int y = 0; y < image.Height(); ++y) {
        for (int x = bits * image.Width(); x < static_cast<int>(image.RowBytes()) * 8; ++x) {
            padding.push_back(image.Bit(x, y));
        }
    }
    return padding;
}

// Runs one code, by handle or by record, and looks at the result and at the host's own image.
HostImage RunCode(const HostImage& host, int code, bool byHandle) {
    DibRecord record = byHandle ? DibRecord{} : host.Record();
    EXPECT_EQ(Morphology(byHandle ? host.Handle() : nullptr, &record, code), 1);
    EXPECT_NE(record.header, host.Record().header);
    EXPECT_EQ(GlobalFlags(host.Handle()) & GMEM_LOCKCOUNT, 1u) << "only the test's own lock";
    return HostImage(record);
}

TEST(Morphology, OneBitImages) {
    std::mt19937 random(1);
    for (int width = 1; width <= 196; ++width) {
        const int height = 1 + width * 5 % 47;
        for (const int code : std::initializer_list<int>{kOpening, kClosing, kDilate, kSmooth, 6, -1}) {
            SCOPED_TRACE(testing::Message() << width << 'x' << height << " code " << code);
            // Sparse dots for the dilations, dense ones with large black areas for the opening.
            const double share = code == kOpening ? 0.9 : code == kClosing ? 0.02 : 0.004;
            HostImage host = HostImage::Random(width, height, 1, random, share);
            const Plane expected = ExpectedBits(BitsOf(host), code);
            const auto padding = PaddingOf(host);
            const HostImage result = RunCode(host, code, width % 2 == 0);
            ExpectPlane(expected, result, false);
            ExpectPlane(expected, host, false);
            EXPECT_EQ(PaddingOf(host), padding);
            EXPECT_EQ(result.Bytes(), host.Bytes());
        }
    }
}

TEST(Morphology, GrayImages) {
    std::mt19937 random(2);
    for (int width = 1; width <= 80; ++width) {
        const int height = 1 + width * 5 % 11;
        for (const int code :
             std::initializer_list<int>{kEdgeMap, kSmooth, kSharpen, kOpening, kDilate, 99}) {
            SCOPED_TRACE(testing::Message() << width << 'x' << height << " code " << code);
            const HostImage host = HostImage::Random(width, height, 8, random);
            // Softer pictures have magnitudes around the edge's limit, and zeros for the packing.
            if (width % 2 == 0) {
                for (std::uint32_t i = 0; i < host.Header().biSizeImage; ++i) host.Row(0)[i] /= 5;
            }
            const Plane expected = ExpectedGray(host, code);
            const auto padding = PaddingOf(host);
            const HostImage result = RunCode(host, code, width % 2 == 0);
            const bool staysGray = code == kSmooth || code == kSharpen;
            ASSERT_EQ(result.Header().biBitCount, staysGray ? 8 : 1);
            ExpectPlane(expected, result, !staysGray);
            ExpectPlane(expected, host, false);
            EXPECT_EQ(PaddingOf(host), padding);
        }
    }
}

TEST(Morphology, ColourImagesAreConvertedAndLeftAlone) {
    std::mt19937 random(3);
    for (const int code : {kEdgeMap, kOpening, kClosing, kSmooth, kSharpen, kDilate}) {
        const HostImage host = HostImage::Random(37, 12, 24, random);
        const auto before = host.Bytes();
        HostImage gray(37, 12, 8);
        DibImage target(gray.Handle());
        DibImage(host.Handle()).ConvertToGray(target);
        const Plane expected = ExpectedGray(gray, code);
        const HostImage result = RunCode(host, code, true);
        ExpectPlane(expected, result, code != kSmooth && code != kSharpen);
        EXPECT_EQ(host.Bytes(), before);
    }
}

TEST(Morphology, RefusesWhatIsNoImage) {
    const HostImage host(8, 8, 8);
    DibRecord empty{};
    EXPECT_EQ(Morphology(host.Handle(), nullptr, kSmooth), 0);
    EXPECT_EQ(Morphology(nullptr, &empty, kSmooth), 0);
    host.Header().biCompression = 1;
    EXPECT_EQ(Morphology(host.Handle(), &empty, kSmooth), 0);
    EXPECT_EQ(empty.header, nullptr);
    for (const auto& [width, height] : {std::pair(0, 9), std::pair(9, 0)}) {
        for (const int bits : {1, 8}) {
            for (int code = 0; code < 7; ++code) {
                const HostImage result = RunCode(HostImage(width, height, bits), code, true);
                EXPECT_EQ(result.Height(), height);
            }
        }
    }
}

TEST(Morphology, ClosingLeavesItsResultInTheDiagnosticFile) {
    const test::DumpFolder folder;
    std::mt19937 random(4);
    const HostImage host = HostImage::Random(100, 60, 1, random, 0.01);
    RunCode(host, kDilate, true);
    EXPECT_TRUE(folder.TakeImage().empty());
    RunCode(host, kClosing, true);
    EXPECT_EQ(folder.TakeImage(), host.Bytes());
}

}  // namespace
}  // namespace tavrix
