// SPDX-License-Identifier: MIT
#include "picture/PictureReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
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

std::vector<std::uint8_t> ReadAll(std::FILE* file) {
    constexpr std::size_t kChunk = 1 << 20;
    std::vector<std::uint8_t> bytes;
    std::size_t got = 0;
    do {
        const std::size_t size = bytes.size();
        bytes.resize(size + std::max(kChunk, size / 2));
        got = std::fread(bytes.data() + size, 1, bytes.size() - size, file);
        bytes.resize(size + got);
    } while (got > 0);
    if (std::ferror(file)) FailReading(std::strerror(errno));
    return bytes;
}

std::vector<std::uint8_t> ReadFile(const std::string& path) {
    if (path == "-") return ReadAll(stdin);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) FailReading(std::strerror(errno));
    struct stat facts = {};
    if (fstat(fileno(file.get()), &facts) == 0 && S_ISDIR(facts.st_mode)) {
        FailReading("is a folder (-r takes the pictures in it)");
    }
    return ReadAll(file.get());
}

bool StartsWith(Bytes bytes, std::string_view mark) {
    return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

bool IsTiff(Bytes bytes) {
    using namespace std::string_view_literals;
    constexpr std::array kMarks = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};
    return std::any_of(kMarks.begin(), kMarks.end(), [&](auto mark) { return StartsWith(bytes, mark); });
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

std::unique_ptr<PictureReader> OpenPicture(const std::string& path) {
    std::vector<std::uint8_t> bytes = ReadFile(path);
    if (bytes.empty()) FailReading("is empty");
    if (IsTiff(bytes)) return ReadTiffPages(std::move(bytes));
    if (bytes.size() > 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6') {
        return ReadPnmPages(std::move(bytes));
    }
    if (StartsWith(bytes, "\x89PNG")) return std::make_unique<SinglePage>(ReadPng(bytes));
    if (StartsWith(bytes, "\xFF\xD8\xFF")) return std::make_unique<SinglePage>(ReadJpeg(bytes));
    if (StartsWith(bytes, "BM")) return std::make_unique<SinglePage>(ReadBmp(bytes));
    FailReading("is not a PNG, JPEG, TIFF, BMP or PNM picture");
}

}  // namespace host
