// SPDX-License-Identifier: MIT
#include "picture/PictureReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <span>
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

constexpr std::size_t kMarkBytes = 32;  // of a file tell its kind

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

class Descriptor {
  public:
    explicit Descriptor(const std::string& path)
        : number(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (number < 0) FailReading(std::strerror(errno));
    }
    ~Descriptor() {
        if (number != STDIN_FILENO) close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return number; }

  private:
    int number;
};

// How many bytes came; 0 at the end.
std::size_t ReadSome(int file, std::span<std::uint8_t> bytes) {
    for (;;) {
        const ssize_t count = read(file, bytes.data(), bytes.size());
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) FailReading(std::strerror(errno));
    }
}

// The whole file, unless its start tells that it is no picture.
std::vector<std::uint8_t> ReadFile(const std::string& path) {
    constexpr std::size_t kLeast = 1 << 16;  // bytes asked for at once
    const Descriptor file(path);
    struct stat facts = {};
    fstat(file.Get(), &facts);
    if (S_ISDIR(facts.st_mode)) FailReading("is a folder (-r takes the pictures in it)");
    const std::size_t whole = S_ISREG(facts.st_mode) ? static_cast<std::size_t>(facts.st_size) + 1 : 0;
    std::vector<std::uint8_t> bytes(whole != 0 ? std::min(whole, kLeast) : kLeast);
    std::size_t size = 0, got = 0;
    do {
        if (size == bytes.size()) bytes.resize(std::max(whole, 2 * size));
        got = ReadSome(file.Get(), std::span(bytes).subspan(size));
        size += got;
    } while (got > 0 && (size < kMarkBytes || KindOf(std::span(bytes).first(size)) != Kind::kUnknown));
    bytes.resize(size);
    return bytes;
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
    std::array<std::uint8_t, kMarkBytes> head;
    try {
        return KindOf(std::span(head).first(ReadSome(Descriptor(path).Get(), head))) != Kind::kUnknown;
    } catch (const PictureError&) {
        return true;
    }
}

std::unique_ptr<PictureReader> OpenPicture(const std::string& path, std::int64_t maxPixels, Colours colours) {
    std::vector<std::uint8_t> bytes = ReadFile(path);
    if (bytes.empty()) FailReading("is empty");
    switch (KindOf(bytes)) {
        case Kind::kTiff: return ReadTiffPages(std::move(bytes), maxPixels);
        case Kind::kPnm: return ReadPnmPages(std::move(bytes), maxPixels);
        case Kind::kPng: return std::make_unique<SinglePage>(ReadPng(bytes, maxPixels));
        case Kind::kJpeg: return std::make_unique<SinglePage>(ReadJpeg(bytes, maxPixels, colours));
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
