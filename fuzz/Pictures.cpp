// SPDX-License-Identifier: MIT
//
// Picture files through the command's readers, and what was read through its writers and back.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "Block.h"
#include "picture/PictureReader.h"
#include "picture/PictureWriter.h"

namespace tavrix::fuzz {
namespace {

constexpr std::int64_t kMaxFuzzPixels = 250'000;
constexpr int kMaxPages = 4;

// A file that lives in memory.
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* data, std::size_t size)
        : descriptor(memfd_create("picture", MFD_CLOEXEC)) {
        Require(write(descriptor, data, size) == static_cast<ssize_t>(size), "a file in memory");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

  private:
    int descriptor;
};

std::vector<host::Picture> Read(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    std::vector<host::Picture> pages;
    try {
        const auto reader = host::OpenPicture(file.Path(), kMaxFuzzPixels);
        while (pages.size() < kMaxPages) {
            std::optional<host::Picture> page = reader->Next();
            if (!page) break;
            pages.push_back(std::move(*page));
        }
    } catch (const host::PictureError&) {
    }
    return pages;
}

bool IsSame(const host::HostImage& a, const host::HostImage& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height() || a.BitCount() != b.BitCount()) return false;
    for (int y = 0; y < a.Height(); ++y) {
        for (int x = 0; x < a.Width() * a.BitCount() / 8; ++x) {
            if (a.TopRow(y)[x] != b.TopRow(y)[x]) return false;
        }
    }
    return true;
}

// Formats that keep every pixel give back what they were given.
void WriteAndReadBack(const std::vector<host::Picture>& pages, int choice) {
    constexpr host::Format kFormats[] = {host::Format::kPng, host::Format::kTiff, host::Format::kBmp,
                                         host::Format::kPnm};
    const host::Format format = kFormats[choice % 4];
    if (pages.size() > 1 && format != host::Format::kTiff) return;
    const std::vector<std::uint8_t> bytes = host::EncodePictures(format, pages);
    const std::vector<host::Picture> again = Read(bytes.data(), bytes.size());
    Require(again.size() == pages.size(), "as many pages as were written");
    for (std::size_t i = 0; i < pages.size(); ++i) {
        Require(IsSame(pages[i].image, again[i].image), "the pixels that were written");
    }
}

}  // namespace
}  // namespace tavrix::fuzz

// The last byte chooses the format to write, so that files stay files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavrix::fuzz;
    const std::vector<host::Picture> pages = Read(data, size);
    if (!pages.empty()) WriteAndReadBack(pages, data[size - 1]);
    return 0;
}
