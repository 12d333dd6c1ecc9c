// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "platform/OutputFile.h"

namespace tavrix::test {

// Makes the folder of the diagnostic file, in a new current directory, while the object lives.
class DumpFolder {
  public:
    DumpFolder() : before(std::filesystem::current_path()) {
        std::random_device random;
        root = std::filesystem::temp_directory_path() / ("tavrix-dump-" + std::to_string(random()));
        std::filesystem::create_directories(root /
                                            std::filesystem::path(platform::kDebugDumpPath).parent_path());
        std::filesystem::current_path(root);
    }
    ~DumpFolder() {
        std::filesystem::current_path(before);
        std::filesystem::remove_all(root);
    }
    DumpFolder(const DumpFolder&) = delete;
    DumpFolder& operator=(const DumpFolder&) = delete;

    // The file as it is now, less its 14-byte file header: a packed image. Removes it; empty when none.
    std::vector<std::uint8_t> TakeImage() const {
        constexpr std::size_t kFileHeaderBytes = 14;
        std::vector<std::uint8_t> bytes;
        {
            std::ifstream file(platform::kDebugDumpPath, std::ios::binary);
            bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
        std::filesystem::remove(platform::kDebugDumpPath);
        if (bytes.size() >= kFileHeaderBytes) bytes.erase(bytes.begin(), bytes.begin() + kFileHeaderBytes);
        return bytes;
    }

  private:
    std::filesystem::path before, root;
};

}  // namespace tavrix::test
