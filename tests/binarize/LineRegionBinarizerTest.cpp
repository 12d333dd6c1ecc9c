// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "binarize/LineRegionReference.h"
#include "binarize/RandomPages.h"
#include "regions/LineRegionBinarizer.h"

// Emulators of 32-bit programs ignore the limit.
#if defined(__linux__) && defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>
#define TAVRIX_CAN_LIMIT_MEMORY
#endif

namespace tavrix {
namespace {

using test::HostImage;
using test::LineRegionReference;

constexpr int kMode = 8;

// Runs the export and the reference on a page, notes the ways that the reference took; the first pixel in
// which they differ, or an empty text.
std::string Difference(const HostImage& page, bool block, std::set<std::string>* branches = nullptr) {
    LineRegionReference reference(page);
    const auto expected = block ? reference.BinarizeBlock() : reference.Binarize();
    if (branches != nullptr) branches->merge(reference.branches);
    DibRecord record{};
    const int done = block ? Binarized_Separate_Block(page.Handle(), &record, kMode)
                           : Binarized(page.Handle(), &record, kMode);
    if (done != 1 || !expected) return "refused";
    const HostImage result(record);
    if (result.Header().biBitCount != 1) return "format";
    for (int y = 0; y < reference.height; ++y) {
        for (int x = 0; x < reference.width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * reference.rowBytes + x;
            if (result.Bit(x, y) != ((*expected)[i] > 1)) {
                return std::to_string(x) + "," + std::to_string(y) + " of " +
                       std::to_string(reference.width) + "x" + std::to_string(reference.height);
            }
        }
    }
    return "";
}

struct Draws {
    std::mt19937 random;
    int operator()(int low, int high) {
        return high <= low ? low : low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    }
    bool OneIn(int n) { return (*this)(1, n) == 1; }
};

void Fill(const HostImage& page, int x0, int y0, int x1, int y1, int tone, int pitch = 1) {
    for (int y = std::max(y0, 0); y <= std::min(y1, page.Height() - 1); y += pitch) {
        for (int x = std::max(x0, 0); x <= std::min(x1, page.Width() - 1); x += pitch) {
            page.Row(y)[x] = static_cast<std::uint8_t>(tone);
        }
    }
}

// A gray page of a card's proportions made up from a seed: paper, shaded areas, dark bands at the sides,
// rows of strokes, specks, noise. Row padding is random.
HostImage CardPage(unsigned seed) {
    Draws size{std::mt19937(seed * 7919u)}, draw{std::mt19937(seed)};
    const int width = size(380, 760), height = size(380, 570);
    HostImage page = HostImage::Random(width, height, 8, draw.random);
    const int paper = draw.OneIn(3) ? 255 : draw(60, 254);
    Fill(page, 0, 0, width, height, paper);
    for (int i = draw(0, 3); i > 0; --i) {
        const int x = draw(-width / 2, width), y = draw(-height / 2, height);
        const int w = draw(0, width), h = draw(0, height), tone = draw(0, 255);
        Fill(page, x, y, x + w, y + h, tone);
    }
    const int left = draw(-width / 5, width / 9), right = draw(-width / 5, width / 9);
    Fill(page, 0, 0, left, height, draw(0, 80));
    Fill(page, width - right, 0, width, height, draw(0, 80));
    for (int i = draw(0, 3); i > 0; --i) {
        const int tone = draw(0, 255), tall = draw(4, 30), gap = draw(3, 20), thick = draw(1, 9);
        const int y0 = draw(0, height), y1 = y0 + draw(0, height), x0 = draw(0, width / 2);
        for (int y = y0; y < y1; y += tall + gap) {
            for (int x = x0; x < width - x0 / 2; x += thick + draw(1, 8)) {
                Fill(page, x, y, x + thick - 1, y + draw(tall / 2, tall) - 1, tone);
            }
        }
    }
    if (draw.OneIn(2)) {
        const int tone = draw(0, 255), wide = draw(0, 2);
        for (int i = draw(0, width * height / 18); i > 0; --i) {
            const int x = draw(0, width - 1), y = draw(0, height - 1);
            Fill(page, x, y, x + wide, y + draw(0, 2), tone);
        }
    }
    const int noise = draw.OneIn(2) ? draw(1, 40) : 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t& pixel = page.Row(y)[x];
            pixel = static_cast<std::uint8_t>(std::clamp(pixel + draw(-noise, noise), 0, 255));
        }
    }
    return page;
}

TEST(LineRegionPages, AreThoseOfTheReference) {
    for (std::uint32_t seed = 0; seed < 120; ++seed) {
        for (const bool block : {false, true}) {
            EXPECT_EQ(Difference(test::RandomPage(seed), block), "") << "seed " << seed;
        }
    }
}

// One and a few pixels, fewer rows than the margins, padding of every width.
TEST(LineRegionPages, MayBeTiny) {
    std::mt19937 random(1);
    for (int width = 1; width <= 9; ++width) {
        for (const int height : {1, 2, 3, 7, 17, 40}) {
            for (const bool block : {false, true}) {
                const HostImage page = HostImage::Random(width, height, 8, random);
                EXPECT_EQ(Difference(page, block), "") << width << 'x' << height;
            }
        }
    }
}

TEST(LineRegionPages, WithoutPixelsBecomeEmptyOneBitImages) {
    for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 5}, std::pair{5, 0}}) {
        const HostImage page(width, height, 8);
        DibRecord records[2] = {};
        ASSERT_EQ(Binarized(page.Handle(), &records[0], kMode), 1);
        ASSERT_EQ(Binarized_Separate_Block(page.Handle(), &records[1], kMode), 1);
        for (const DibRecord& record : records) {
            const HostImage result(record);
            EXPECT_EQ(result.Header().biBitCount, 1);
            EXPECT_EQ(result.Width(), width);
            EXPECT_EQ(result.Height(), height);
        }
    }
}

// A card with a line of dark text and a dark band with light text, both strokes of 6 x 30 pixels.
TEST(LineRegionPages, TurnDarkBandsIntoDarkTextOnWhite) {
    const HostImage page(600, 400, 8);
    Fill(page, 0, 0, 599, 399, 235);
    Fill(page, 100, 220, 379, 319, 40);
    for (int x = 130; x < 350; x += 14) {
        Fill(page, x, 100, x + 5, 129, 30);
        Fill(page, x, 255, x + 5, 284, 240);
    }
    DibRecord record{};
    ASSERT_EQ(Binarized(page.Handle(), &record, kMode), 1);
    const HostImage result(record);
    EXPECT_EQ(result.Bit(133, 115), 0);  // dark stroke
    EXPECT_EQ(result.Bit(139, 115), 1);
    EXPECT_EQ(result.Bit(133, 270), 0);  // light stroke
    EXPECT_EQ(result.Bit(139, 270), 1);
    EXPECT_EQ(result.Bit(110, 230), 1);  // band
    EXPECT_EQ(result.Bit(95, 270), 1);   // frame
}

// Pages made for what card pages hardly ever are.

// Dots four pixels apart, a fifth of the page black: very busy and bright.
HostImage DotsBesideBlack() {
    HostImage page(480, 490, 8);
    Fill(page, 0, 0, 479, 489, 255);
    Fill(page, 0, 0, 479, 99, 0);
    Fill(page, 0, 100, 479, 489, 0, 4);
    return page;
}
// Very busy and dark.
HostImage LightDotsOnBlack() {
    HostImage page(441, 400, 8);
    Fill(page, 0, 0, 440, 399, 20);
    Fill(page, 0, 0, 440, 399, 255, 4);
    return page;
}
// Very busy, half gray; in a clearing a striped block, three quarters dark with its margin.
HostImage StripesAmongDots() {
    HostImage page(640, 620, 8);
    Fill(page, 0, 0, 639, 619, 191);
    Fill(page, 0, 0, 639, 269, 100);
    Fill(page, 0, 0, 639, 619, 0, 4);
    Fill(page, 200, 350, 390, 540, 191);
    for (int x = 215; x < 375; ++x) Fill(page, x, 365, x, 524, x % 25 < 12 ? 20 : 90);
    return page;
}
// Rows of bars that interlock to one line over the page, columns of dots between them.
HostImage InterlockedBars() {
    HostImage page(800, 620, 8);
    Fill(page, 0, 0, 799, 619, 255);
    for (int i = 0; i < 37; ++i) {
        const int x = 30 + 20 * i;
        for (int y = 30 + i % 2 * 23; y < 550; y += 46) Fill(page, x, y, x + 9, y + 39, 0);
        for (int y = 30; y < 580; y += 5) {
            Fill(page, x + 12, y, x + 12, y, 0);
            Fill(page, x + 16, y, x + 16, y, 0);
        }
    }
    return page;
}
// Busy, bright and shaded; in a clearing a block whose 3 x 3 means are all dark.
HostImage WeaveAmongDots() {
    HostImage page(560, 480, 8);
    Fill(page, 0, 0, 559, 479, 255);
    Fill(page, 0, 0, 559, 49, 150);
    Fill(page, 0, 0, 559, 479, 0, 4);
    Fill(page, 200, 200, 390, 390, 255);
    for (int y = 215; y < 375; ++y) {
        for (int x = 215; x < 375; ++x) Fill(page, x, y, x, y, (x % 3 + y % 3 * 3) % 2 != 0 ? 139 : 0);
    }
    return page;
}
// One striped block that covers the page, three quarters of two dark tones.
HostImage CoveringStripes(int dark, int middle) {
    HostImage page(400, 300, 8);
    Fill(page, 0, 0, 399, 299, 132);
    for (int x = 51; x < 350; ++x) {
        const int phase = (x - 51) % 25;
        if (phase < 11 || phase >= 14) Fill(page, x, 40, x, 259, phase < 11 ? dark : middle);
    }
    return page;
}

// Every way that a page can take, by the names of the reference: the choice of the pre-mask by stroke ends
// and histogram class, the classes of both line rules and what they depend on, the finishing codes.
constexpr const char* kBranches =
    "alternative, class 0, dark|alternative, class 0, light|alternative, class 1, large|"
    "alternative, class 1, small|alternative, class 1, smoothed 0|alternative, class 1, smoothed 1|"
    "alternative, class 1, smoothed 2|alternative, class 1, smoothed 3|alternative, class 1, smoothed 4|"
    "alternative, class 1, smoothed 5|alternative, class 2, dark|alternative, class 2, light|"
    "alternative, class 2, smoothed|alternative, class 3, histogram 0|alternative, class 3, histogram 1|"
    "alternative, class 3, histogram 2|alternative, class 3, histogram 3|alternative, class 3, histogram 4|"
    "alternative, class 3, histogram 5|busy, class 0|busy, class 1|busy, class 1, bright|busy, class 2|"
    "busy, class 3|busy, class 4|busy, class 5|busy, class 7|busy, class 7, bright|code 0|code 1|code 2|"
    "column beyond the last|covers the page|few, class 0|few, class 1|few, class 2|few, class 3|few, class 4|"
    "few, class 5|few, class 7|left border|medium, class 0|medium, class 0, dark mean|medium, class 1|"
    "medium, class 1, dark mean|medium, class 2|medium, class 2, dark mean|medium, class 3|medium, class 4|"
    "medium, class 4, dark mean|medium, class 5|medium, class 5, dark mean|medium, class 7|"
    "more than 500 components|no left border|no line|no right border|right border|row beyond the last|"
    "rule, class 0, dark|rule, class 0, light|rule, class 1, dark|rule, class 1, dark mean|"
    "rule, class 1, factor 10|rule, class 1, factor 9.6|rule, class 1, factor 9.8|rule, class 1, hint|"
    "rule, class 1, light|rule, class 1, lowered|rule, class 1, no dark mean|rule, class 1, plain|"
    "rule, class 1, second pass|rule, class 2, dark|rule, class 2, dark mean|rule, class 2, light|"
    "rule, class 2, no dark mean|rule, class 2, plain|rule, class 2, second pass|rule, class 2, sharpened|"
    "rule, class 3, dark mean|rule, class 3, mid tones|rule, class 3, no dark mean|very busy, class 1|"
    "very busy, class 3|very busy, class 5|very busy, class 7|";

TEST(LineRegionPages, TakeEveryBranch) {
    std::set<std::string> taken;
    for (const unsigned seed :
         {3282, 385, 2030, 280, 4085, 91,  3998, 4180, 1215, 2012, 3,    27,   37,   54,  60,
          70,   86,  96,   256, 276,  291, 308,  321,  619,  630,  1247, 1731, 1910, 4786}) {
        EXPECT_EQ(Difference(CardPage(seed), false, &taken), "") << "seed " << seed;
    }
    for (const auto make :
         {DotsBesideBlack, LightDotsOnBlack, StripesAmongDots, InterlockedBars, WeaveAmongDots,
          +[] { return CoveringStripes(20, 90); }, +[] { return CoveringStripes(10, 62); }}) {
        EXPECT_EQ(Difference(make(), false, &taken), "");
    }
    std::istringstream branches(kBranches);
    for (std::string branch; std::getline(branches, branch, '|');) {
        EXPECT_EQ(taken.count(branch), 1u) << branch;
    }
}

#ifdef TAVRIX_CAN_LIMIT_MEMORY
// Planes take new address space, whatever was freed before.
const int kLargeBlocksApart = mallopt(M_MMAP_THRESHOLD, 128 * 1024);

// Bounds what the process may still allocate while the object lives.
class MemoryLimit {
  public:
    explicit MemoryLimit(std::size_t bytes) {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        getrlimit(RLIMIT_AS, &before);
        const rlimit now{pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + bytes, before.rlim_max};
        setrlimit(RLIMIT_AS, &now);
    }
    ~MemoryLimit() { setrlimit(RLIMIT_AS, &before); }

  private:
    rlimit before;
};

// Whatever allocation fails, of planes, stores or containers, the host gets a whole 1-bit image.
TEST(LineRegionPages, BecomeOneBitImagesWhenMemoryRunsOut) {
    constexpr int kStep = 700'000, kEnough = 28'000'000;  // bytes
    ASSERT_EQ(kLargeBlocksApart, 1);
    for (const bool block : {false, true}) {
        int packed = 0;
        for (int budget = kEnough; budget >= 0; budget -= kStep) {
            const HostImage page = CardPage(321);
            DibRecord record{};
            {
                const MemoryLimit limit(static_cast<std::size_t>(budget));
                ASSERT_EQ(block ? Binarized_Separate_Block(page.Handle(), &record, kMode)
                                : Binarized(page.Handle(), &record, kMode),
                          1);
            }
            const HostImage result(record);
            ASSERT_EQ(result.Header().biBitCount, 1);
            ASSERT_EQ(result.Header().biSizeImage, result.RowBytes() * page.Height());
            const bool failed = page.Header().biBitCount == 8;  // packed as it was left
            ASSERT_FALSE(failed && budget == kEnough);
            packed += failed;
        }
        EXPECT_GT(packed, 0);
    }
}
#endif

}  // namespace
}  // namespace tavrix
