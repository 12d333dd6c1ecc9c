// SPDX-License-Identifier: MIT
#include "platform/OutputFile.h"
#include "tavrix/tavrix.h"

namespace tavrix::platform {

const char* const kDebugDumpPath = "d:\\outputImg\\test.bmp";

OutputFile::OutputFile(const char* path) {
    const HANDLE opened =
        CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened != INVALID_HANDLE_VALUE) file = opened;
}

OutputFile::~OutputFile() {
    if (IsOpen()) CloseHandle(file);
}

bool OutputFile::Write(const void* data, std::size_t bytes) {
    DWORD written = 0;
    return WriteFile(file, data, static_cast<DWORD>(bytes), &written, nullptr) && written == bytes;
}

}  // namespace tavrix::platform
