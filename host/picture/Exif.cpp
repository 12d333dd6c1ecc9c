// SPDX-License-Identifier: MIT
#include "picture/Exif.h"

namespace host {
namespace {

enum Tag { kOrientation = 0x112, kXResolution = 0x11A, kYResolution = 0x11B, kResolutionUnit = 0x128 };
enum Type { kShort = 3, kRational = 5 };
enum Unit { kInch = 2, kCentimetre = 3 };

constexpr std::size_t kEntryBytes = 12;

class Block {
  public:
    explicit Block(std::span<const std::uint8_t> block)
        : bytes(block), isBigEndian(!block.empty() && block[0] == 'M') {}

    // Beyond the block everything reads 0.
    std::uint32_t Number(std::size_t at, std::size_t size) const {
        std::uint32_t value = 0;
        if (at + size > bytes.size()) return 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = value << 8 | bytes[isBigEndian ? at + i : at + size - 1 - i];
        }
        return value;
    }

    double Rational(std::size_t at) const {
        const double denominator = Number(at + 4, 4);
        return denominator > 0 ? Number(at, 4) / denominator : 0;
    }

  private:
    std::span<const std::uint8_t> bytes;
    bool isBigEndian;
};

}  // namespace

ExifFacts ParseExif(std::span<const std::uint8_t> bytes) {
    ExifFacts facts;
    const Block block(bytes);
    if (block.Number(2, 2) != 42) return facts;
    std::uint32_t unit = kInch;
    const std::size_t directory = block.Number(4, 4);
    const std::size_t count = block.Number(directory, 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + i * kEntryBytes;
        const std::uint32_t type = block.Number(entry + 2, 2);
        const std::size_t value = entry + 8;
        switch (block.Number(entry, 2)) {
            case kOrientation:
                if (type == kShort) facts.orientation = static_cast<int>(block.Number(value, 2));
                break;
            case kXResolution:
                if (type == kRational) facts.resolution.x = block.Rational(block.Number(value, 4));
                break;
            case kYResolution:
                if (type == kRational) facts.resolution.y = block.Rational(block.Number(value, 4));
                break;
            case kResolutionUnit: unit = block.Number(value, 2); break;
            default: break;
        }
    }
    if (unit == kCentimetre) {
        facts.resolution.x *= kCentimetresPerInch;
        facts.resolution.y *= kCentimetresPerInch;
    } else if (unit != kInch) {
        facts.resolution = {};
    }
    return facts;
}

}  // namespace host
