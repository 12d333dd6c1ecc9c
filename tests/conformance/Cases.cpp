// SPDX-License-Identifier: MIT
#include "Cases.h"

#include <cstdio>

namespace tavrix::conformance {
namespace {

#ifdef _WIN32
constexpr char kDumpPath[] = "d:\\outputImg\\test.bmp";
#else
constexpr char kDumpPath[] = "outputImg/test.bmp";
#endif
constexpr std::size_t kMaxDumpBytes = 1 << 24;

// The diagnostic file, if a call wrote one: its length and a digest. Removes it.
void AddDump(Outcome& outcome) {
    std::FILE* file = std::fopen(kDumpPath, "rb");
    if (file == nullptr) return;
    std::vector<char> bytes(kMaxDumpBytes);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    std::remove(kDumpPath);
    std::uint32_t sum = 0;
    for (const char byte : bytes) sum = sum * 31 + static_cast<std::uint8_t>(byte);
    outcome.AddNumbers("dump", {static_cast<std::int64_t>(bytes.size()), sum});
}

}  // namespace

std::string NameOf(const Sheet& sheet, int bitCount) {
    return sheet.name + ", " + std::to_string(bitCount) + " bit";
}

void AddSeen(Outcome& outcome, const DibRecord& picture, std::unique_ptr<const ImagePart> before,
             const DibRecord& result) {
    outcome.Add("input", std::make_unique<ImagePart>(picture, std::move(before)));
    outcome.Add("result", std::make_unique<ImagePart>(result));
    AddDump(outcome);
    if (result.header != nullptr) {
        Require(static_cast<const void*>(result.palette) == result.header + 1 &&
                    static_cast<const void*>(result.bits) == result.palette + result.header->biClrUsed,
                "a result is one packed block");
        Require(GlobalFree(GlobalHandle(result.header)) == nullptr, "a result is freed through its header");
    }
}

}  // namespace tavrix::conformance
