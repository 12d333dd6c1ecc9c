// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace tavrix::platform {

// A file opened for writing, created or truncated; closed when the object goes.
class OutputFile {
  public:
    explicit OutputFile(const char* path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool IsOpen() const { return file != kClosed; }
    [[nodiscard]] bool Write(const void* data, std::size_t bytes);

  private:
    static constexpr void* kClosed = nullptr;
    void* file = kClosed;
};

// Where the diagnostic copies of intermediate images go. Nothing is written when the folder is not there.
extern const char* const kDebugDumpPath;

}  // namespace tavrix::platform
