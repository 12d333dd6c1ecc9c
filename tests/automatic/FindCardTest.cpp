// SPDX-License-Identifier: MIT
// Drawn cards: where the logo and the main line are found, by the share that the boxes have in common.
#include <gtest/gtest.h>

#include <functional>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "automatic/FindCard.h"
#include "operations/Operations.h"

namespace host {
namespace {

struct Card {
    std::string name;
    std::function<void(cv::Mat&)> draw;
    cv::Rect logo;      // empty where the card has none
    cv::Rect mainLine;  // empty where it does not matter
};

void PrintTo(const Card& card, std::ostream* out) {
    *out << card.name;
}

void Write(cv::Mat& card, cv::Point at, double size, int level, const std::string& text) {
    cv::putText(card, text, at, cv::FONT_HERSHEY_SIMPLEX, size, cv::Scalar(level), size > 0.7 ? 3 : 1,
                cv::LINE_AA);
}

void WriteAddress(cv::Mat& card, int top, int level) {
    const char* const lines[] = {"Hofgasse 27, 24103 Nordhafen", "Tel 0431 5520 - Fax 0431 5521",
                                 "werkstatt@beispiel.de"};
    for (int i = 0; i < 3; ++i) Write(card, {60, top + 30 * i}, 0.6, level, lines[i]);
}

HostImage ImageOf(const cv::Mat& gray) {
    HostImage image(gray.cols, gray.rows, 8);
    for (int y = 0; y < gray.rows; ++y) std::copy_n(gray.ptr(y), gray.cols, image.TopRow(y));
    return image;
}

// 1 for the same box, 0 for boxes apart; where there is none on both sides, 1.
double Likeness(const std::optional<Box>& found, const cv::Rect& drawn) {
    if (!found) return drawn.empty() ? 1 : 0;
    const cv::Rect box(found->left, found->top, found->right - found->left + 1,
                       found->bottom - found->top + 1);
    return static_cast<double>((box & drawn).area()) / (box.area() + drawn.area() - (box & drawn).area());
}

class FindCardTest : public testing::TestWithParam<Card> {};

TEST_P(FindCardTest, FindsLogoAndMainLine) {
    cv::Mat card(480, 720, CV_8U, cv::Scalar(225));
    GetParam().draw(card);
    const Conversion page = ToBlackAndWhite(ImageOf(card), {});
    EXPECT_GE(Likeness(FindLogoOf(page), GetParam().logo), 0.8);
    if (GetParam().mainLine.empty()) return;
    EXPECT_GE(Likeness(FindTrueLine(TextOf(page), {}), GetParam().mainLine), 0.7);
}

const std::vector<Card> kCards = {
    {"LogoOfSeveralParts",
     [](cv::Mat& card) {
         for (int i = 0; i < 3; ++i)
             cv::rectangle(card, {60 + 34 * i, 120 - 30 * i, 26, 40 + 30 * i}, {70}, cv::FILLED);
         cv::line(card, {60, 172}, {153, 172}, {70}, 8);
         WriteAddress(card, 300, 50);
     },
     {60, 60, 94, 117},
     {}},
    {"TextOnly",
     [](cv::Mat& card) {
         Write(card, {60, 120}, 1.8, 50, "Harm Petersen");
         cv::line(card, {60, 160}, {660, 160}, {50}, 2);
         WriteAddress(card, 300, 50);
     },
     {},
     {60, 80, 400, 50}},
    {"LightOnADarkCard",
     [](cv::Mat& card) {
         card.setTo(45);
         cv::circle(card, {360, 120}, 60, {220}, 12);
         cv::line(card, {320, 120}, {400, 120}, {220}, 10);
         Write(card, {200, 240}, 1.2, 230, "Nordlicht Optik");
         WriteAddress(card, 330, 230);
     },
     {294, 54, 133, 133},
     {}},
    {"BesideALargeName",
     [](cv::Mat& card) {
         cv::ellipse(card, {120, 110}, {50, 30}, 30, 0, 360, {60}, cv::FILLED);
         cv::circle(card, {120, 110}, 12, {225}, cv::FILLED);
         Write(card, {200, 130}, 1.8, 60, "Segelmacher");
         WriteAddress(card, 300, 60);
     },
     {74, 73, 93, 75},
     {200, 90, 370, 55}},
    {"OnADesk",
     [](cv::Mat& desk) {
         desk.setTo(140);
         cv::rectangle(desk, {0, 440, 720, 40}, {20}, cv::FILLED);
         cv::rectangle(desk, {40, 40, 600, 360}, {235}, cv::FILLED);
         cv::circle(desk, {520, 130}, 55, {90}, 14);
         cv::circle(desk, {520, 130}, 20, {90}, cv::FILLED);
         WriteAddress(desk, 290, 50);
     },
     {458, 68, 125, 125},
     {}},
    {"AboveARowOfFramedSigns",
     [](cv::Mat& card) {
         Write(card, {60, 110}, 1.8, 50, "Fahrdienst");
         cv::ellipse(card, {600, 100}, {80, 50}, 0, 0, 360, {50}, 14);
         for (int i = 0; i < 4; ++i) {
             cv::rectangle(card, {60 + 130 * i, 180, 120, 70}, {50}, 2);
             if (i % 2 == 0) {
                 Write(card, {70 + 130 * i, 222}, 0.5, 50, "Karte " + std::to_string(i));
             } else {
                 cv::circle(card, {120 + 130 * i, 215}, 20, {50}, 6);
             }
         }
         WriteAddress(card, 330, 50);
     },
     {513, 43, 175, 115},
     {60, 70, 310, 45}},
};

INSTANTIATE_TEST_SUITE_P(, FindCardTest, testing::ValuesIn(kCards),
                         [](const auto& card) { return card.param.name; });

}  // namespace
}  // namespace host
