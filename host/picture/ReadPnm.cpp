// SPDX-License-Identifier: MIT
#include <utility>
#include <vector>

#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr unsigned kMaxSample = 65535;

// PBM, PGM and PPM, plain (P1 to P3) and raw (P4 to P6); raw files may hold several pages.
class PnmPages : public PictureReader {
  public:
    PnmPages(std::vector<std::uint8_t> content, std::int64_t most)
        : bytes(std::move(content)), maxPixels(most) {}

    std::optional<Picture> Next() override {
        if (at > 0) SkipSpace();
        if (at >= bytes.size()) return std::nullopt;
        if (bytes[at] != 'P' || at + 1 == bytes.size() || bytes[at + 1] < '1' || bytes[at + 1] > '6') {
            if (isStarted) return std::nullopt;  // other data may follow the picture
            FailReading("PNM: the header is damaged");
        }
        isStarted = true;
        const int kind = bytes[at + 1] - '0';
        at += 2;
        const bool isPlain = kind <= 3;
        const int samples = kind % 3 == 0 ? 3 : 1;
        const bool isBitmap = kind % 3 == 1;
        const unsigned width = ReadNumber();
        const unsigned height = ReadNumber();
        const unsigned maximum = isBitmap ? 1 : ReadNumber();
        CheckSize(width, height, maxPixels);
        if (maximum == 0 || maximum > kMaxSample) FailReading("PNM: the header is damaged");
        if (!isPlain) ++at;  // the one space before the pixels
        // A plain sample takes a digit at least.
        const std::size_t sampleBits = isPlain ? 8 : isBitmap ? 1 : maximum > 255 ? 16 : 8;
        const std::size_t rowBytes = (sampleBits * static_cast<std::size_t>(samples) * width + 7) / 8;
        if (at > bytes.size() || rowBytes * height > bytes.size() - at) {
            FailReading("PNM: the file is cut short");
        }
        Picture page{HostImage(static_cast<int>(width), static_cast<int>(height),
                               isBitmap       ? 1
                               : samples == 3 ? 24
                                              : 8),
                     {}};
        for (int y = 0; y < page.image.Height(); ++y) {
            std::uint8_t* row = page.image.TopRow(y);
            if (isBitmap) {
                isPlain ? ReadPlainBits(row, width) : ReadBits(row, width);
            } else {
                ReadSamples(row, width, samples, maximum, isPlain);
            }
        }
        return page;
    }

  private:
    void ReadBits(std::uint8_t* row, unsigned width) {
        for (unsigned x = 0; x < width; x += 8) row[x / 8] = static_cast<std::uint8_t>(~Byte());
    }

    void ReadPlainBits(std::uint8_t* row, unsigned width) {
        for (unsigned x = 0; x < width; ++x) {
            SkipSpace();
            const int digit = Byte();
            if (digit != '0' && digit != '1') FailReading("PNM: the pixels are damaged");
            if (digit == '0') row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | 0x80 >> x % 8);
        }
    }

    // Colour samples lie as red, green, blue in the file, the other way round in the image.
    void ReadSamples(std::uint8_t* row, unsigned width, int samples, unsigned maximum, bool isPlain) {
        for (unsigned x = 0; x < width; ++x, row += samples) {
            for (int k = samples - 1; k >= 0; --k) {
                unsigned value = isPlain ? ReadNumber() : static_cast<unsigned>(Byte());
                if (!isPlain && maximum > 255) value = value << 8 | static_cast<unsigned>(Byte());
                if (value > maximum) FailReading("PNM: a pixel exceeds the header's maximum");
                row[k] = static_cast<std::uint8_t>((value * 255 + maximum / 2) / maximum);
            }
        }
    }

    int Byte() {
        if (at >= bytes.size()) FailReading("PNM: the file is cut short");
        return bytes[at++];
    }

    void SkipSpace() {
        bool isComment = false;
        for (; at < bytes.size(); ++at) {
            const int c = bytes[at];
            if (c == '#') isComment = true;
            if (c == '\n' || c == '\r') isComment = false;
            const bool isSpace = c == ' ' || (c >= '\t' && c <= '\r');
            if (!isComment && !isSpace) return;
        }
    }

    unsigned ReadNumber() {
        constexpr unsigned kEnough = 100'000'000;
        SkipSpace();
        if (at >= bytes.size()) FailReading("PNM: the file is cut short");
        if (bytes[at] < '0' || bytes[at] > '9') FailReading("PNM: the file is damaged");
        unsigned value = 0;
        for (; at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9' && value < kEnough; ++at) {
            value = value * 10 + (bytes[at] - '0');
        }
        return value;
    }

    std::vector<std::uint8_t> bytes;
    std::int64_t maxPixels;
    std::size_t at = 0;
    bool isStarted = false;
};

}  // namespace

std::unique_ptr<PictureReader> ReadPnmPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels) {
    return std::make_unique<PnmPages>(std::move(bytes), maxPixels);
}

}  // namespace host
