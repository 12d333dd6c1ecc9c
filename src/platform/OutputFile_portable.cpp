// SPDX-License-Identifier: MIT
#include <cstdio>

#include "platform/OutputFile.h"

namespace tavrix::platform {

// Relative to the current directory.
const char* const kDebugDumpPath = "outputImg/test.bmp";

OutputFile::OutputFile(const char* path) : file(std::fopen(path, "wb")) {
    // Unbuffered, so that Write knows whether the bytes went out.
    if (IsOpen()) std::setvbuf(static_cast<std::FILE*>(file), nullptr, _IONBF, 0);
}

OutputFile::~OutputFile() {
    if (IsOpen()) std::fclose(static_cast<std::FILE*>(file));
}

bool OutputFile::Write(const void* data, std::size_t bytes) {
    return std::fwrite(data, 1, bytes, static_cast<std::FILE*>(file)) == bytes;
}

}  // namespace tavrix::platform
