// SPDX-License-Identifier: MIT
// Drawn pages that fixed modes lose: the automatic result is counted against the drawing, pixel by pixel.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "automatic/Conversion.h"
#include "automatic/LostText.h"
#include "tavrix/automatic.h"

namespace host {
namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 480;

struct Drawing {
    cv::Mat gray{kHeight, kWidth, CV_8U, cv::Scalar(225)};
    cv::Mat glyphs{kHeight, kWidth, CV_8U, cv::Scalar(0)};  // 255 where there is print
};

void Write(Drawing& drawing, int x, int y, double size, int level,
           const std::string& text = "Hofgasse 27 Tel 0431") {
    const int thickness = size > 0.7 ? 2 : 1;
    cv::putText(drawing.gray, text, {x, y}, cv::FONT_HERSHEY_SIMPLEX, size, cv::Scalar(level), thickness,
                cv::LINE_AA);
    cv::putText(drawing.glyphs, text, {x, y}, cv::FONT_HERSHEY_SIMPLEX, size, cv::Scalar(255), thickness,
                cv::LINE_8);
}

void WriteLines(Drawing& drawing, int top, double size, int level) {
    for (int i = 0; i < 4; ++i) Write(drawing, 60, top + static_cast<int>(i * 50 * size), size, level);
}

// Multiplies by a light that falls off from left to right, and adds grain from a fixed seed.
void Shade(Drawing& drawing, double darkest, double grain) {
    cv::Mat noise(kHeight, kWidth, CV_16S);
    cv::RNG random(7);
    random.fill(noise, cv::RNG::NORMAL, 0, grain);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double light = 1 - (1 - darkest) * x / kWidth;
            std::uint8_t& pixel = drawing.gray.at<std::uint8_t>(y, x);
            pixel = cv::saturate_cast<std::uint8_t>(pixel * light + noise.at<short>(y, x));
        }
    }
}

HostImage ImageOf(const cv::Mat& gray) {
    HostImage image(gray.cols, gray.rows, 8);
    for (int y = 0; y < gray.rows; ++y) std::copy_n(gray.ptr(y), gray.cols, image.TopRow(y));
    return image;
}

// 255 where the picture is black.
cv::Mat InkOf(const HostImage& bits) {
    cv::Mat ink(bits.Height(), bits.Width(), CV_8U);
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            ink.at<std::uint8_t>(y, x) = (bits.TopRow(y)[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255;
        }
    }
    return ink;
}

// How much of one mask lies within a pixel of the other, 0 to 1.
double Covered(const cv::Mat& mask, const cv::Mat& by) {
    cv::Mat wide;
    cv::dilate(by, wide, cv::Mat::ones(3, 3, CV_8U));
    const int all = cv::countNonZero(mask);
    return all == 0 ? 1 : static_cast<double>(cv::countNonZero(mask & wide)) / all;
}

struct Page {
    std::string name;
    std::function<void(Drawing&)> draw;
    std::string losing;  // a fixed mode that does not keep it
};

void PrintTo(const Page& page, std::ostream* out) {
    *out << page.name;
}

class LostPagesTest : public testing::TestWithParam<Page> {};

TEST_P(LostPagesTest, KeepsTheGlyphsAndLittleElse) {
    Drawing drawing;
    GetParam().draw(drawing);
    const auto result = [&drawing](const Mode& mode) {
        return InkOf(ToBlackAndWhite(ImageOf(drawing.gray), {mode}).bits);
    };
    const cv::Mat ink = result(kAutomaticMode);
    EXPECT_GE(Covered(drawing.glyphs, ink), 0.95) << "print that was kept";
    EXPECT_GE(Covered(ink, drawing.glyphs), 0.9) << "ink that is print";
    const cv::Mat lost = result(*FindMode(GetParam().losing));
    EXPECT_LT(std::min(Covered(drawing.glyphs, lost), Covered(lost, drawing.glyphs)), 0.8)
        << GetParam().losing;
}

const std::vector<Page> kPages = {
    {"FaintPrint",
     [](Drawing& page) {
         WriteLines(page, 80, 0.9, 195);
         Shade(page, 1, 2);
     },
     "regions"},
    {"BrokenPrint",
     [](Drawing& page) {
         WriteLines(page, 80, 0.9, 195);
         for (int i = 0; i < 4; ++i) Write(page, 560, 80 + 45 * i, 0.9, 195, "33 88");
         for (cv::Mat* picture : {&page.gray, &page.glyphs}) {  // a printer's dead dots
             for (int y = 0; y < kHeight; y += 8) {
                 cv::rectangle(*picture, {560, y, 160, 3}, picture->at<std::uint8_t>(0, 0), cv::FILLED);
             }
         }
         Shade(page, 1, 2);
     },
     "regions"},
    {"DarkBand",
     [](Drawing& page) {
         WriteLines(page, 70, 0.9, 40);
         cv::rectangle(page.gray, {0, 290, kWidth, 130}, cv::Scalar(50), cv::FILLED);
         Write(page, 60, 340, 1, 230, "Werkstatt Nord");
         Write(page, 60, 390, 1, 230, "offen 8 bis 17 Uhr");
         // A light mark with dark dashes: they are no print on it.
         for (auto& [picture, level] : {std::pair{&page.gray, 230}, std::pair{&page.glyphs, 255}}) {
             cv::rectangle(*picture, {480, 305, 40, 90}, cv::Scalar(level), cv::FILLED);
             cv::rectangle(*picture, {480, 365, 180, 30}, cv::Scalar(level), cv::FILLED);
             for (int x = 500; x < 640; x += 20) {
                 cv::line(*picture, {x, 383}, {x + 10, 375}, cv::Scalar(255 - level), 3);
             }
         }
     },
     "otsu"},
    {"Shading",
     [](Drawing& page) {
         WriteLines(page, 80, 1, 60);
         WriteLines(page, 290, 0.9, 60);
         Shade(page, 0.25, 2);
     },
     "isodata"},
    {"SmallType",
     [](Drawing& page) {
         for (int i = 0; i < 12; ++i)
             Write(page, 40, 60 + 24 * i, 0.4, 70, "Lieferung frei Haus ab 50 Euro, montags bis freitags");
         cv::GaussianBlur(page.gray, page.gray, {}, 0.7);
         Shade(page, 0.6, 1);
     },
     "sharp"},
    {"BlackLid",
     [](Drawing& page) {
         WriteLines(page, 90, 0.9, 60);
         cv::rectangle(page.gray, {0, 400, kWidth, 80}, cv::Scalar(15), cv::FILLED);
         cv::rectangle(page.gray, {650, 0, 70, kHeight}, cv::Scalar(15), cv::FILLED);
         Shade(page, 0.9, 2);
     },
     "otsu"},
};

INSTANTIATE_TEST_SUITE_P(, LostPagesTest, testing::ValuesIn(kPages),
                         [](const auto& page) { return page.param.name; });

TEST(AutomaticTest, KeepsLettersAndPicturesApart) {
    Drawing page;
    WriteLines(page, 90, 1, 60);
    const cv::Rect mark(520, 300, 120, 120);
    cv::rectangle(page.gray, mark, cv::Scalar(60), 12);
    const Conversion conversion = ToBlackAndWhite(ImageOf(page.gray), {});
    const cv::Mat pictures = InkOf(conversion.bits) & ~InkOf(conversion.letters);
    EXPECT_GE(Covered(page.glyphs, InkOf(conversion.letters)), 0.95);
    EXPECT_GT(cv::countNonZero(pictures), 4000);
    EXPECT_EQ(cv::boundingRect(pictures) | mark, cv::boundingRect(pictures));
    EXPECT_EQ(cv::countNonZero(pictures & page.glyphs), 0);
}

TEST(AutomaticTest, BlankPagesStayBlank) {
    for (const double darkest : {1.0, 0.5}) {
        Drawing page;
        Shade(page, darkest, 4);
        const Conversion conversion = ToBlackAndWhite(ImageOf(page.gray), {});
        EXPECT_EQ(CountBlack(conversion.bits), 0);
        EXPECT_EQ(conversion.warnings, std::vector<std::string>{"the result is nearly blank"});
    }
}

const std::string kHardlyAny = "hardly any text was found";

TEST(AutomaticTest, PhotographsDoNotBecomeText) {
    for (const double grain : {2.0, 4.0, 25.0}) {  // the finer ones have hundreds of spots like letters
        cv::Mat photograph(kHeight, kWidth, CV_8U);
        cv::RNG random(3);
        random.fill(photograph, cv::RNG::UNIFORM, 0, 256);
        cv::GaussianBlur(photograph, photograph, {}, grain);
        cv::normalize(photograph, photograph, 0, 255, cv::NORM_MINMAX);
        const Conversion conversion = ToBlackAndWhite(ImageOf(photograph), {});
        EXPECT_LT(conversion.choice->confidence, 0.6) << grain;
        ASSERT_FALSE(conversion.warnings.empty()) << grain;
        EXPECT_EQ(conversion.warnings.back(), kHardlyAny) << grain;
    }
}

TEST(AutomaticTest, SaysWhereThereIsHardlyAnyText) {
    const auto warningsOf = [](const cv::Mat& gray) { return ToBlackAndWhite(ImageOf(gray), {}).warnings; };
    Drawing discs, coins, text;
    Shade(discs, 0.7, 4);
    for (int i = 0; i < 5; ++i)
        cv::circle(discs.gray, {100 + 130 * i, 90 + 60 * i}, 30 + 15 * i, {40.0 + 20 * i}, -1);
    for (int i = 0; i < 30; ++i)
        cv::circle(coins.gray, {60 + 60 * (i % 10), 90 + 120 * (i / 10)}, 20, {60.0}, -1);
    Shade(coins, 0.7, 4);
    EXPECT_EQ(warningsOf(discs.gray), std::vector<std::string>{kHardlyAny});
    EXPECT_EQ(warningsOf(coins.gray), std::vector<std::string>{kHardlyAny});
    Write(text, 200, 240, 1, 60, "Hofgasse");
    EXPECT_TRUE(warningsOf(text.gray).empty());
    WriteLines(text, 90, 1, 60);
    for (const int degrees : {0, 17, 90}) {
        cv::Mat turned(kWidth, kWidth, CV_8U);
        cv::Mat turn = cv::getRotationMatrix2D({kWidth / 2, kHeight / 2}, degrees, 1);
        turn.at<double>(1, 2) += (kWidth - kHeight) / 2;
        cv::warpAffine(text.gray, turned, turn, turned.size(), cv::INTER_CUBIC, cv::BORDER_REPLICATE);
        EXPECT_TRUE(warningsOf(turned).empty()) << degrees;
    }
}

TEST(AutomaticTest, EnlargesSmallTypeOnly) {
    for (const auto& [size, scale] : {std::pair{0.4, 2}, std::pair{1.2, 1}}) {
        Drawing page;
        WriteLines(page, 90, size, 50);
        const Conversion conversion =
            ToBlackAndWhite(ImageOf(page.gray), {kAutomaticMode, false, kAutomaticScale});
        EXPECT_EQ(conversion.scale, scale);
        EXPECT_EQ(conversion.bits.Width(), scale * kWidth);
        EXPECT_EQ(
            ToBlackAndWhite(ImageOf(page.gray), {*FindMode("lines"), false, kAutomaticScale}).bits.Width(),
            scale * kWidth);
    }
}

TEST(AutomaticTest, TwoLevelsAreKept) {
    Drawing page;
    WriteLines(page, 90, 1, 0);
    const cv::Mat levels = cv::Mat(page.glyphs / 255 * 30 + 100);  // the print is the lighter one
    for (const char* mode : {"auto", "otsu"}) {
        const cv::Mat ink = InkOf(ToBlackAndWhite(ImageOf(levels), {*FindMode(mode)}).bits);
        EXPECT_EQ(cv::countNonZero(ink != (255 - page.glyphs)), 0) << mode;
    }
}

TEST(CInterfaceTest, LeavesTheHostsLocksAsTheyWere) {
    const HostImage image = ImageOf(Drawing().gray);
    const unsigned before = GlobalFlags(image.Handle());
    for (const auto& [bitCount, scale, isRead] : {std::tuple{8, 1, 1}, {16, 1, 0}, {8, 4, 0}}) {
        image.Record().header->biBitCount = static_cast<std::uint16_t>(bitCount);
        TavrixAutomatic result = {};
        EXPECT_EQ(TavrixReadAutomatically(image.Handle(), scale, &result), isRead);
        LogoRect logo = {};
        EXPECT_EQ(TavrixFindLogo(image.Handle(), &logo), 0);  // not of 1 bit
        EXPECT_EQ(GlobalFlags(image.Handle()), before);
        if (result.bits.header != nullptr) HostImage{result.bits};
    }
}

TEST(LostTextTest, CountsLettersAndNoTexture) {
    Drawing page;
    WriteLines(page, 90, 1, 60);
    cv::Mat carpet = page.gray(cv::Rect(420, 0, 300, kHeight));
    cv::RNG(5).fill(carpet, cv::RNG::UNIFORM, 0, 256);
    const auto warningsOf = [&page](const cv::Mat& glyphs) {
        HostImage bits(kWidth, kHeight, 1);
        std::memset(bits.Record().bits, 0xFF, bits.RowBytes() * kHeight);
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                if (glyphs.at<std::uint8_t>(y, x) != 0)
                    bits.TopRow(y)[x / 8] &= static_cast<std::uint8_t>(~(0x80 >> x % 8));
            }
        }
        return WarningsFor(ImageOf(page.gray), bits, std::nullopt);
    };
    EXPECT_EQ(warningsOf(page.glyphs), std::vector<std::string>());
    page.glyphs(cv::Rect(0, 0, kWidth, 150)) = 0;  // two lines of four
    ASSERT_EQ(warningsOf(page.glyphs).size(), 1);
    EXPECT_EQ(warningsOf(page.glyphs)[0].substr(0, 38), "much less ink than other modes find: 5");
}

TEST(LostTextTest, SaysHowAFixedModeLostText) {
    Drawing page;
    for (int i = 0; i < 8; ++i) Write(page, 20, 60 + 50 * i, 1, 120);
    cv::rectangle(page.gray, {600, 0, 120, kHeight}, cv::Scalar(0), cv::FILLED);
    const Conversion conversion = ToBlackAndWhite(ImageOf(page.gray), {*FindMode("gradient")});
    EXPECT_FALSE(conversion.warnings.empty());
}

}  // namespace
}  // namespace host
