// SPDX-License-Identifier: MIT
// Each method against its rule, written down pixel by pixel.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "binarize/GrayPictures.h"
#include "binarize/OtsuBinarizer.h"
#include "binarize/PeakFitBinarizer.h"
#include "image/ImageTool.h"
#include "support/Messages.h"

namespace tavrix {
namespace {

using test::Content;
using test::GrayPicture;
using test::HostImage;
using test::Messages;

// Plain access to the picture as it was; outside reads a fixed value.
class Source {
  public:
    explicit Source(const HostImage& host) : width(host.Width()), height(host.Height()) {
        for (int y = 0; y < height; ++y) {
            values.insert(values.end(), host.Row(y), host.Row(y) + width);
        }
    }
    bool Has(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
    int At(int x, int y, int outside = 0) const { return Has(x, y) ? values[y * width + x] : outside; }

    int width, height;

  private:
    std::vector<std::uint8_t> values;
};

using IsWhite = std::function<bool(int x, int y)>;
// Prepares a method's rule for one picture. The thresholds of whole images have tests of their own.
using Rule = IsWhite (*)(const Source& source, DibImage& image);

IsWhite OtsuRule(const Source& source, DibImage& image) {
    const int threshold = OtsuBinarizer(&image).ImageOtsuThreshold();
    return [&source, threshold](int x, int y) { return source.At(x, y) >= threshold; };
}

IsWhite PeakFitRule(const Source& source, DibImage& image) {
    const int threshold = PeakFitBinarizer(&image).PeakThreshold();
    return [&source, threshold](int x, int y) { return source.At(x, y) >= threshold; };
}

IsWhite IsodataRule(const Source& source, DibImage& image) {
    OtsuBinarizer binarizer(&image);
    binarizer.ComputeHistogram(1);
    const int threshold = Binarizer::IsodataThreshold(binarizer.histogram);
    return [&source, threshold](int x, int y) { return source.At(x, y) >= threshold; };
}

IsWhite LocalContrastRule(const Source& source, DibImage& image) {
    const int otsu = OtsuBinarizer(&image).ImageOtsuThreshold();
    return [&source, otsu](int x, int y) {
        double sum = 0, squares = 0;
        for (int j = -2; j <= 2; ++j) {
            for (int i = -2; i <= 2; ++i) {
                const double value = source.At(x + i, y + j, 255);
                sum += value;
                squares += value * value;
            }
        }
        const int mean = static_cast<int>(sum * 0.04);
        const int deviation = static_cast<int>(std::sqrt((25.0 * squares - sum * sum) * 0.0016));
        const double base = deviation >= 20 ? mean : otsu;
        return source.At(x, y) > (mean < otsu ? base + 20 : base - 20);
    };
}

IsWhite BernsenRule(const Source& source, DibImage&) {
    return [&source](int x, int y) {
        double high = 0, low = 255;
        for (int j = y - 7; j <= y + 7; ++j) {
            for (int i = x - 7; i <= x + 7; ++i) {
                if (!source.Has(i, j)) continue;
                high = std::max<double>(high, source.At(i, j));
                low = std::min<double>(low, source.At(i, j));
            }
        }
        const int middle = static_cast<int>((high + low) * 0.5);
        return source.At(x, y) > (high - low >= 15 ? middle : 0);
    };
}

IsWhite GradientRule(const Source& source, DibImage&) {
    const auto gradient = [&source](int x, int y) {
        if (!source.Has(x, y)) return 0;
        int gx = 0, gy = 0;
        for (int d = -1; d <= 1; ++d) {
            const int weight = d == 0 ? 2 : 1;
            gx += weight * (source.At(x + 1, y + d) - source.At(x - 1, y + d));
            gy += weight * (source.At(x + d, y + 1) - source.At(x + d, y - 1));
        }
        return (std::abs(gx) + std::abs(gy)) & 0xFF;
    };
    return [&source, gradient](int x, int y) {
        if (y == 0 || source.At(x, y) == source.At(x, y - 1)) return false;
        const int sum = gradient(x, y - 1) + gradient(x - 1, y) + gradient(x + 1, y) + gradient(x, y + 1);
        const int level = static_cast<int>(0.25 * sum);
        return level >= 1 && level <= 99;
    };
}

struct Method {
    const char* name;
    std::uint32_t id;
    Rule rule;
};

class Methods : public testing::TestWithParam<Method> {
  protected:
    // Compares a run with the rule, and looks at what else the run may and may not change.
    void Check(const HostImage& host) {
        const Source source(host);
        const std::vector<std::uint8_t> before = host.Bytes();
        DibImage image(host.Handle());
        const IsWhite isWhite = GetParam().rule(source, image);
        ASSERT_TRUE(ImageTool(&image).BinarizeByMethod(GetParam().id));
        const std::size_t table = kHeaderBytes, pixels = table + TableBytesOf(8);
        const std::vector<std::uint8_t> after = host.Bytes();
        ASSERT_TRUE(std::equal(before.begin(), before.begin() + table, after.begin())) << "header";
        for (int i = 0; i < 256; ++i) {
            const int rest = i == 1 || i == 2 ? 0 : 255;
            const std::uint8_t expected[] = {std::uint8_t(rest), std::uint8_t(rest),
                                             std::uint8_t(i == 1 ? 0 : 255), 0};
            ASSERT_TRUE(std::equal(expected, expected + 4, &after[table + 4 * i])) << "colour " << i;
        }
        for (int y = 0; y < host.Height(); ++y) {
            for (int x = 0; x < static_cast<int>(host.RowBytes()); ++x) {
                const bool padding = x >= host.Width();
                const int old = before[pixels + host.RowBytes() * y + x];
                ASSERT_EQ(host.Row(y)[x], padding         ? old
                                          : isWhite(x, y) ? 255
                                                          : 0)
                    << (padding ? "padding " : "pixel ") << x << ',' << y << " of " << host.Width() << 'x'
                    << host.Height() << " was " << old;
            }
        }
    }
};

TEST_P(Methods, FollowTheirRules) {
    for (const int width : {0, 1, 2, 3, 4, 7, 8, 13, 15, 16, 17, 31, 32, 33, 46, 63, 64, 65, 130}) {
        for (const int height : {0, 1, 2, 3, 5, 7, 8, 9, 14, 15, 16, 31}) {
            for (const Content content : test::kContents) {
                Check(GrayPicture(width, height, content));
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_P(Methods, WorkOnTheLongestRowAndColumn) {
    Check(GrayPicture(kMaxSide, 1, Content::kText));
    Check(GrayPicture(1, kMaxSide, Content::kText));
}

TEST_P(Methods, ReadIndicesWhateverTheColourTable) {
    const HostImage host = GrayPicture(50, 40, Content::kText);
    for (int i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 37);
        host.Record().palette[i] = {level, static_cast<std::uint8_t>(255 - i), level, 9};
    }
    Check(host);
}

INSTANTIATE_TEST_SUITE_P(All, Methods,
                         testing::Values(Method{"Otsu", 0, OtsuRule}, Method{"PeakFit", 1, PeakFitRule},
                                         Method{"LocalContrast", 2, LocalContrastRule},
                                         Method{"Bernsen", 3, BernsenRule},
                                         Method{"Gradient", 4, GradientRule},
                                         Method{"Isodata", 6, IsodataRule}),
                         [](const auto& test) { return test.param.name; });

TEST(Dispatch, ShowsAMessageForUnknownIds) {
    const HostImage host = GrayPicture(20, 20, Content::kText);
    const std::vector<std::uint8_t> before = host.Bytes();
    DibImage image(host.Handle());
    ImageTool tool(&image);
    for (const std::uint32_t id : {7u, 10u, 0xFFFFu, 0x10007u}) {
        const Messages messages;
        EXPECT_FALSE(tool.BinarizeByMethod(id));
        EXPECT_FALSE(tool.BinarizeByBlocks(id));
        EXPECT_EQ(messages.texts, std::vector<std::string>(2, "非接受之二值化格式"));
    }
    const Messages messages;
    EXPECT_FALSE(tool.BinarizeByBlocks(9));
    EXPECT_EQ(messages.texts.size(), 1u);
    EXPECT_EQ(host.Bytes(), before);
}

TEST(Dispatch, TakesTheLow16BitsOfAnId) {
    const HostImage a = GrayPicture(20, 20, Content::kText), b = GrayPicture(20, 20, Content::kText);
    DibImage imageA(a.Handle()), imageB(b.Handle());
    EXPECT_TRUE(ImageTool(&imageA).BinarizeByMethod(0x30003));
    EXPECT_TRUE(ImageTool(&imageB).BinarizeByMethod(3));
    EXPECT_EQ(a.Bytes(), b.Bytes());
}

TEST(Dispatch, BlockVariantsOfTheSixMethodsLeaveTheImageAlone) {
    const HostImage host = GrayPicture(20, 20, Content::kText);
    const std::vector<std::uint8_t> before = host.Bytes();
    DibImage image(host.Handle());
    for (const std::uint32_t id : {0u, 1u, 2u, 3u, 4u, 6u}) {
        EXPECT_TRUE(ImageTool(&image).BinarizeByBlocks(id));
    }
    EXPECT_EQ(host.Bytes(), before);
}

}  // namespace
}  // namespace tavrix
