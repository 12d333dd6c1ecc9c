// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

#include "geometry/InterpolationKernels.h"
#include "support/DumpFolder.h"
#include "support/HostImage.h"
#include "support/KernelVariants.h"

namespace tavrix {
namespace {

using test::HostImage;

struct Picture {
    int width, height, pixelBytes;
    std::vector<std::uint8_t> bytes;
};

int PixelAt(const HostImage& image, int x, int y, int pixelBytes, int k) {
    const bool inside = x >= 0 && x < image.Width() && y >= 0 && y < image.Height();
    return inside ? image.Row(y)[x * pixelBytes + k] : 0;
}

// The rule, pixel by pixel.
Picture Turned(const HostImage& source, double angle, bool clockwise) {
    const int pixelBytes = source.Header().biBitCount / 8;
    const int W = source.Width(), H = source.Height();
    if (angle < 0) clockwise = !clockwise;
    angle = std::fabs(angle);
    const bool wide = angle > 90;
    if (wide) angle = std::fmod(angle, 360.0);
    const double theta = angle * 0.005555555555555556 * 3.1416159;
    double s = std::sin(theta), c = std::cos(theta);
    if (pixelBytes == 3) {
        s = static_cast<float>(s);
        c = static_cast<float>(c);
    }
    const double sizeC = wide ? std::fabs(c) : c, sizeS = wide ? std::fabs(s) : s;
    Picture result{
        static_cast<int>(W * sizeC + H * sizeS), static_cast<int>(H * sizeC + W * sizeS), pixelBytes, {}};
    const int hNW = result.width >> 1, hNH = result.height >> 1, hW = W >> 1, hH = H >> 1;
    if (clockwise) s = -s;
    for (int y = 0; y < result.height; ++y) {
        const int dy = y - hNH;
        const int a = static_cast<int>(dy * s), b = static_cast<int>(dy * c);
        for (int x = 0; x < result.width; ++x) {
            const int dx = x - hNW;
            const double sx = dx * c + a + hW;
            const double sy = b - dx * s + hH;
            for (int k = 0; k < pixelBytes; ++k) {
                if (sx < 0 || sx > W - 1 || sy < 0 || sy > H - 1) {
                    result.bytes.push_back(255);
                    continue;
                }
                const int ix = static_cast<int>(sx), iy = static_cast<int>(sy);
                const double fx = sx - ix, fy = sy - iy;
                const int p00 = PixelAt(source, ix, iy, pixelBytes, k);
                const int p10 = PixelAt(source, ix + 1, iy, pixelBytes, k);
                const int p01 = PixelAt(source, ix, iy + 1, pixelBytes, k);
                const int p11 = PixelAt(source, ix + 1, iy + 1, pixelBytes, k);
                result.bytes.push_back(static_cast<std::uint8_t>(static_cast<int>(
                    fx * (fy * p11 + (1 - fy) * p10) + (1 - fx) * ((1 - fy) * p00 + fy * p01))));
            }
        }
    }
    return result;
}

void CheckTurn(const HostImage& source, double angle, int clockwise) {
    SCOPED_TRACE(testing::Message() << source.Width() << 'x' << source.Height() << 'x'
                                    << source.Header().biBitCount << " by " << angle << ' ' << clockwise);
    const auto before = source.Bytes();
    DibRecord record{};
    ASSERT_EQ(RotateImageFree(source.Handle(), angle, clockwise, &record), 1);
    const HostImage result(record);
    const Picture expected = Turned(source, angle, (clockwise & 0xFFFF) != 0);
    ASSERT_EQ(result.Width(), expected.width);
    ASSERT_EQ(result.Height(), expected.height);
    ASSERT_EQ(result.Header().biXPelsPerMeter, 101600);
    const std::size_t rowPixels = static_cast<std::size_t>(expected.width) * expected.pixelBytes;
    for (int y = 0; y < expected.height; ++y) {
        for (std::size_t i = 0; i < result.RowBytes(); ++i) {
            ASSERT_EQ(result.Row(y)[i], i < rowPixels ? expected.bytes[y * rowPixels + i] : 0)
                << "byte " << i << " of row " << y;
        }
    }
    EXPECT_EQ(source.Bytes(), before);
}

TEST(FreeRotation, FollowsTheRulePixelByPixel) {
    std::mt19937 random(1);
    // Angles at which the float or the double of sine or cosine is tiny, the quarter turn with its slightly
    // negative cosine, negative ones and ones beyond a quarter turn.
    const double angles[] = {0,    30,     45,       90,        3,   60.123, 89.99,    1e-3,  7e-5,
                             1e-9, 1e-300, 89.99933, 89.999334, -30, -1e-4,  135,      180,   269,
                             300,  359.9,  360,      720.5,     1e9, 90.1,   89.99999, 12.345};
    const std::pair<int, int> sizes[] = {{1, 1},   {2, 2},   {3, 2},   {5, 3},
                                         {37, 21}, {64, 48}, {101, 7}, {3, 90}};
    for (const int bitCount : {8, 24}) {
        for (const auto& [width, height] : sizes) {
            const HostImage source = HostImage::Random(width, height, bitCount, random);
            for (const double angle : angles) {
                CheckTurn(source, angle, 0);
                CheckTurn(source, angle, 1);
            }
        }
    }
    const HostImage source = HostImage::Random(40, 30, 8, random);
    CheckTurn(source, 20, 0x10000);  // only the low half of the direction counts
    for (double angle = 0.5; angle < 90; angle += 3.7) CheckTurn(source, angle, 1);
}

TEST(FreeRotation, RefusesAndHandsBackEmptyPictures) {
    const HostImage gray(30, 20, 8), thin(1, 9, 8), bits(40, 8, 1), huge(32767, 300, 8);
    DibRecord record{};
    for (const double angle :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(RotateImageFree(gray.Handle(), angle, 0, &record), -1);
        EXPECT_EQ(RotateFree(gray.Handle(), angle, 0, &record), nullptr);
    }
    EXPECT_EQ(RotateImageFree(huge.Handle(), 0.5, 0, &record), -1) << "wider than an image can be";
    EXPECT_EQ(RotateFree(bits.Handle(), 10, 0, &record), nullptr);
    EXPECT_EQ(RotateImageFree(nullptr, 10, 0, &record), -1);
    EXPECT_EQ(RotateImageFree(gray.Handle(), 10, 0, nullptr), -1);
    EXPECT_EQ(record.header, nullptr);

    ASSERT_EQ(RotateImageFree(thin.Handle(), 90, 0, &record), 1);
    const HostImage empty(record);
    EXPECT_EQ(empty.Width(), 8);
    EXPECT_EQ(empty.Height(), 0);

    ASSERT_EQ(RotateImageFree(bits.Handle(), 30, 0, &record), 1);
    const HostImage black(record);
    EXPECT_EQ(black.Width(), 38);
    EXPECT_EQ(black.Header().biBitCount, 1);
    for (std::uint32_t i = 0; i < black.Header().biSizeImage; ++i) EXPECT_EQ(black.Row(0)[i], 0);
}

TEST(FreeRotation, RotateFreeDeliversTwoCopies) {
    std::mt19937 random(2);
    const HostImage source = HostImage::Random(30, 20, 24, random);
    DibRecord record{};
    const HGLOBAL second = RotateFree(source.Handle(), 25, 1, &record);
    ASSERT_NE(second, nullptr);
    const HostImage first(record);
    ASSERT_NE(second, first.Handle());
    EXPECT_EQ(GlobalFlags(second) & GMEM_LOCKCOUNT, 1u);
    const auto* bytes = static_cast<const std::uint8_t*>(GlobalLock(second));
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + GlobalSize(second)), first.Bytes());
    GlobalFree(second);
    EXPECT_EQ(GlobalFlags(source.Handle()) & GMEM_LOCKCOUNT, 1u) << "only the test's own lock";
}

TEST(FreeRotation, LeavesItsResultInTheDiagnosticFile) {
    const test::DumpFolder folder;
    std::mt19937 random(4);
    const HostImage source = HostImage::Random(30, 20, 8, random);
    DibRecord record{};
    ASSERT_EQ(RotateImageFree(source.Handle(), 25, 1, &record), 1);
    const HostImage turned(record);
    EXPECT_EQ(folder.TakeImage(), turned.Bytes());
    ASSERT_EQ(RotateGrayImage(source.Handle(), 90, &record), 1);
    const HostImage quarter(record);
    EXPECT_EQ(folder.TakeImage(), quarter.Bytes());
}

// The other tests see the variant that this machine chooses; here all must agree.
TEST(InterpolationKernels, VariantsAgree) {
    std::mt19937 random(3);
    std::vector<std::uint8_t> source(300 * 300);
    for (std::uint8_t& byte : source) byte = static_cast<std::uint8_t>(random());
    for (int i = 0; i < 200; ++i) {
        const double theta = i * 0.0078;
        const TurnedRow row{std::sin(theta), std::cos(theta), 70.0, 3.0, 2.0, 15.0, 100.0};
        int first = 70;  // a run below row 200 and left of column 99 whatever the angle
        const int last = first + i % 83;
        const auto agree = [&](auto baseline, auto avx2, int pixelBytes) {
            std::optional<std::vector<std::uint8_t>> expected;
            test::OnVariants(baseline, avx2, [&](auto* kernel) {
                std::vector<std::uint8_t> target(pixelBytes * std::size_t(last));
                kernel(row, source.data(), 300, first, last, target.data());
                EXPECT_EQ(target, expected.value_or(target)) << "theta " << theta;
                expected = target;
            });
        };
        agree(TAVRIX_VARIANTS(InterpolationKernels, gray), 1);
        agree(TAVRIX_VARIANTS(InterpolationKernels, color), 3);
    }
}

}  // namespace
}  // namespace tavrix
