// SPDX-License-Identifier: MIT
// Every export on random pictures, headers and arguments: whatever comes in, a call ends, a result is a
// well-formed image in a block of its own, and the same call gives the same bytes again.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "image/DibLayout.h"
#include "support/HostImage.h"
#include "tavrix/component_store.hpp"
#include "tavrix/message_handler.h"

namespace tavrix {
namespace {

using test::HostImage;
using Random = std::mt19937;

int Between(Random& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

// Noise, or rows of strokes with bands and frames.
HostImage RandomPicture(Random& random) {
    static constexpr int kDepths[] = {1, 8, 24};
    const int bitCount = kDepths[Between(random, 0, 2)];
    const int longest = Between(random, 0, 4) == 0 ? 320 : 70;
    const int width = Between(random, 0, longest), height = Between(random, 0, longest);
    if (Between(random, 0, 2) == 0) {
        return HostImage::Random(width, height, bitCount, random, Between(random, 1, 9) / 10.0);
    }
    HostImage image(width, height, bitCount);
    const int paper = Between(random, 60, 255), ink = Between(random, 0, paper),
              pitch = Between(random, 3, 40);
    const int noise = Between(random, 1, 40), band = Between(random, 0, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            bool dark = y % pitch > pitch / 3 && x % (pitch / 2 + 2) < pitch / 4 + 1;
            if (y < band / 3) dark = !dark;
            const int value = std::clamp((dark ? ink : paper) + Between(random, -noise, noise), 0, 255);
            if (bitCount == 1) {
                image.SetBit(x, y, !dark);
            } else {
                for (int k = 0; k < bitCount / 8; ++k)
                    image.Row(y)[x * bitCount / 8 + k] = static_cast<std::uint8_t>(value);
            }
        }
    }
    return image;
}

void SpoilHeader(HostImage& image, Random& random) {
    BITMAPINFOHEADER& header = image.Header();
    const int value = Between(random, -70000, 70000);
    switch (Between(random, 0, 6)) {
        case 0: header.biSize = static_cast<std::uint32_t>(value); break;
        case 1: header.biWidth = value; break;
        case 2: header.biHeight = value; break;
        case 3: header.biBitCount = static_cast<std::uint16_t>(Between(random, 0, 32)); break;
        case 4: header.biCompression = 1; break;
        case 5: header.biClrUsed = static_cast<std::uint32_t>(value); break;
        default: header.biSizeImage = static_cast<std::uint32_t>(value);
    }
}

void Append(std::vector<std::uint8_t>& seen, const void* data, std::size_t bytes) {
    const auto* start = static_cast<const std::uint8_t*>(data);
    seen.insert(seen.end(), start, start + bytes);
}

// Takes a result over, checks its form and notes its bytes.
void Take(const DibRecord& record, std::vector<std::uint8_t>& seen) {
    if (record.header == nullptr) return;
    const HostImage result(record);
    ASSERT_NE(result.Handle(), nullptr);
    const BITMAPINFOHEADER& header = result.Header();
    const std::size_t table = TableBytesOf(header.biBitCount);
    EXPECT_EQ(header.biSizeImage, RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight);
    EXPECT_GE(GlobalSize(result.Handle()), kHeaderBytes + table + header.biSizeImage);
    EXPECT_EQ(reinterpret_cast<std::uint8_t*>(record.palette),
              reinterpret_cast<std::uint8_t*>(record.header) + 40);
    EXPECT_EQ(record.bits, reinterpret_cast<std::uint8_t*>(record.palette) + table);
    Append(seen, record.header, kHeaderBytes + table + header.biSizeImage);
}

void NoteTree(const ComponentNode* node, std::vector<std::uint8_t>& seen) {
    for (; node != nullptr; node = node->next) {
        const std::int16_t sides[] = {node->left, node->top, node->right, node->bottom};
        Append(seen, sides, sizeof sides);
        Append(seen, &node->pixelCount, sizeof node->pixelCount);
        NoteTree(node->firstChild, seen);
    }
}

// The whole of what one random call, or a host's flow of calls, shows to the host.
std::vector<std::uint8_t> Call(unsigned seed) {
    Random random(seed);
    std::vector<std::uint8_t> seen;
    HostImage image = RandomPicture(random);
    if (Between(random, 0, 9) == 0) SpoilHeader(image, random);
    const DibRecord given = image.Record();
    DibRecord result{};
    const double angle = Between(random, -100, 1000) / 10.0 + Between(random, 0, 1) * 1e-6;
    const BlockRect cut{static_cast<std::int16_t>(Between(random, -9, 60)),
                        static_cast<std::int16_t>(Between(random, -9, 90)),
                        static_cast<std::int16_t>(Between(random, -9, 90)),
                        static_cast<std::int16_t>(Between(random, -9, 60)), 0};
    const GroupingOptions options{static_cast<std::uint16_t>(Between(random, 0, 3) << 14), 0,
                                  static_cast<std::uint16_t>(Between(random, 0, 1))};
    std::int64_t value = 0;
    switch (Between(random, 0, 9)) {
        case 0:
        case 1:
        case 2: value = Binarized(image.Handle(), &result, Between(random, -1, 10)); break;
        case 3: value = Binarized_Separate_Block(image.Handle(), &result, Between(random, -1, 10)); break;
        case 4: value = RotateImageFree(image.Handle(), angle, Between(random, 0, 1), &result); break;
        case 5: {
            const HGLOBAL second = RotateFree(image.Handle(), angle, Between(random, 0, 1), &result);
            value = GlobalFree(second) == nullptr;
            break;
        }
        case 6: value = RotateImageBlock(given, cut, Between(random, 0, 6), &result); break;
        case 7:
            value = seed % 2 == 0 ? RotateGrayImage(image.Handle(), 90, &result)
                                  : RemoveImageBorder(image.Handle(), &result);
            break;
        case 8: value = Morphology(image.Handle(), &result, Between(random, 0, 6)); break;
        default: {
            host::Store owned;
            ComponentStore* store = owned.get();
            value = Extract_Eight_Connected_Components(given, store, Between(random, 0, 3), 2, 3);
            for (int i = Between(random, 0, 3); i > 0; --i) {
                value = 2 * value + Noise_Filter1(given, store, i, 3, Between(random, 0, 2));
                value = 2 * value + Grouping(given, store, &options, Between(random, 0, 3),
                                             Between(random, 0, 1) << 5, 0);
            }
            const LogoRect logo = FindCardLogo(given, *store);
            const TrueLineRect line = FindTrueLineRect(&given, &options);
            Append(seen, &logo, sizeof logo);
            Append(seen, &line, sizeof line);
            NoteTree(store->firstBlock, seen);
        }
    }
    Append(seen, &value, sizeof value);
    Take(result, seen);
    return seen;
}

TEST(RandomCalls, EndWellAndRepeat) {
    TavrixSetMessageHandler([](const char*, void*) {}, nullptr);
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_EQ(Call(seed), Call(seed));
        if (HasFailure()) break;
    }
    TavrixSetMessageHandler(nullptr, nullptr);
}

}  // namespace
}  // namespace tavrix
