// SPDX-License-Identifier: MIT
#include "picture/PictureReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace host {
namespace {

class SinglePage : public PictureReader {
  public:
    explicit SinglePage(Picture picture) : page(std::move(picture)) {}
    std::optional<Picture> Next() override { return std::exchange(page, std::nullopt); }

  private:
    std::optional<Picture> page;
};

bool StartsWith(Bytes bytes, std::string_view mark) {
    return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

enum class Kind { kUnknown, kPng, kJpeg, kTiff, kBmp, kPnm, kWebp, kHeif };

Kind KindOf(Bytes head) {
    using namespace std::string_view_literals;
    constexpr std::array kMarks = {
        std::pair("\x89PNG"sv, Kind::kPng), std::pair("\xFF\xD8\xFF"sv, Kind::kJpeg),
        std::pair("II*\0"sv, Kind::kTiff),  std::pair("MM\0*"sv, Kind::kTiff),
        std::pair("II+\0"sv, Kind::kTiff),  std::pair("MM\0+"sv, Kind::kTiff),
    };
    for (const auto& [mark, kind] : kMarks) {
        if (StartsWith(head, mark)) return kind;
    }
    // Both name their kind behind a length.
    if (StartsWith(head, "RIFF"sv) && head.size() >= 12 && StartsWith(head.subspan(8), "WEBP"sv))
        return Kind::kWebp;
    if (head.size() >= 12 && StartsWith(head.subspan(4), "ftyp"sv)) {
        constexpr std::array kBrands = {"heic"sv, "heix"sv, "heim"sv, "heis"sv, "mif1"sv, "avif"sv};
        for (const std::string_view brand : kBrands) {
            if (StartsWith(head.subspan(8), brand)) return Kind::kHeif;
        }
    }
    // Two letters alone start many a text: the size of the header, or the number that follows, must fit.
    if (StartsWith(head, "BM") && (head.size() < 18 || LittleEndian(head, 14, 4) < 256)) return Kind::kBmp;
    if (head.size() > 2 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6' &&
        (std::isspace(head[2]) || head[2] == '#')) {
        const auto first =
            std::find_if_not(head.begin() + 2, head.end(), [](int c) { return std::isspace(c); });
        if (first != head.end() && (std::isdigit(*first) || *first == '#')) return Kind::kPnm;
    }
    return Kind::kUnknown;
}

// The whole file, unless its start tells that it is no picture.
std::vector<std::uint8_t> ReadAll(std::FILE* file) {
    constexpr std::size_t kChunk = 1 << 20;
    std::vector<std::uint8_t> bytes;
    std::size_t got = 0;
    do {
        const std::size_t size = bytes.size();
        bytes.resize(size + std::max(kChunk, size / 2));
        got = std::fread(bytes.data() + size, 1, bytes.size() - size, file);
        bytes.resize(size + got);
    } while (got > 0 && KindOf(bytes) != Kind::kUnknown);
    if (std::ferror(file)) FailReading(std::strerror(errno));
    return bytes;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::vector<std::uint8_t> ReadFile(const std::string& path) {
    if (path == "-") return ReadAll(stdin);
    const File file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) FailReading(std::strerror(errno));
    struct stat facts = {};
    if (fstat(fileno(file.get()), &facts) == 0 && S_ISDIR(facts.st_mode)) {
        FailReading("is a folder (-r takes the pictures in it)");
    }
    return ReadAll(file.get());
}

}  // namespace

std::uint32_t BigEndian(Bytes bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes[at + i];
    return value;
}

std::uint32_t LittleEndian(Bytes bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i) value = value << 8 | bytes[at + i - 1];
    return value;
}

bool LooksLikePicture(const std::string& path) {
    std::array<std::uint8_t, 32> head;
    const File file(std::fopen(path.c_str(), "rb"), std::fclose);
    return !file ||
           KindOf({head.data(), std::fread(head.data(), 1, head.size(), file.get())}) != Kind::kUnknown;
}

std::unique_ptr<PictureReader> OpenPicture(const std::string& path, std::int64_t maxPixels) {
    std::vector<std::uint8_t> bytes = ReadFile(path);
    if (bytes.empty()) FailReading("is empty");
    switch (KindOf(bytes)) {
        case Kind::kTiff: return ReadTiffPages(std::move(bytes), maxPixels);
        case Kind::kPnm: return ReadPnmPages(std::move(bytes), maxPixels);
        case Kind::kPng: return std::make_unique<SinglePage>(ReadPng(bytes, maxPixels));
        case Kind::kJpeg: return std::make_unique<SinglePage>(ReadJpeg(bytes, maxPixels));
        case Kind::kBmp: return std::make_unique<SinglePage>(ReadBmp(bytes, maxPixels));
#ifdef TAVRIX_READS_WEBP
        case Kind::kWebp: return std::make_unique<SinglePage>(ReadWebp(bytes, maxPixels));
#endif
#ifdef TAVRIX_READS_HEIF
        case Kind::kHeif: return ReadHeifPages(std::move(bytes), maxPixels);
#endif
        default: break;
    }
    FailReading(std::string("is not a picture of a kind that this tavrix reads: ") + kReadFormats);
}

}  // namespace host
