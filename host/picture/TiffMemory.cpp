// SPDX-License-Identifier: MIT
#include "picture/TiffMemory.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace host {
namespace {

TiffMemory& Of(thandle_t self) {
    return *static_cast<TiffMemory*>(self);
}

}  // namespace

TiffMemory::TiffMemory(std::vector<std::uint8_t> content, const char* mode, std::int64_t maxBytes)
    : bytes(std::move(content)) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), NoteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), IgnoreWarning, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), maxBytes);
    handle =
        TIFFClientOpenExt("picture", mode, this, Read, Write, Seek, Close, Size, Map, Unmap, options.get());
}

TiffMemory::~TiffMemory() {
    if (handle != nullptr) TIFFClose(handle);
}

std::vector<std::uint8_t> TiffMemory::Finish() {
    TIFFClose(std::exchange(handle, nullptr));
    return std::move(bytes);
}

tsize_t TiffMemory::Read(thandle_t self, void* to, tsize_t count) {
    TiffMemory& file = Of(self);
    if (file.at >= file.bytes.size()) return 0;
    const auto got = std::min<toff_t>(static_cast<toff_t>(count), file.bytes.size() - file.at);
    std::memcpy(to, file.bytes.data() + file.at, got);
    file.at += got;
    return static_cast<tsize_t>(got);
}

tsize_t TiffMemory::Write(thandle_t self, void* from, tsize_t count) {
    TiffMemory& file = Of(self);
    const toff_t end = file.at + static_cast<toff_t>(count);
    try {
        if (end > file.bytes.size()) file.bytes.resize(end);
    } catch (...) {
        return -1;
    }
    std::memcpy(file.bytes.data() + file.at, from, static_cast<std::size_t>(count));
    file.at = end;
    return count;
}

toff_t TiffMemory::Seek(thandle_t self, toff_t offset, int whence) {
    TiffMemory& file = Of(self);
    file.at = offset + (whence == SEEK_CUR ? file.at : whence == SEEK_END ? file.bytes.size() : 0);
    return file.at;
}

toff_t TiffMemory::Size(thandle_t self) {
    return Of(self).bytes.size();
}

// Strips are decoded where they lie. A file that is written grows, so it is not mapped.
int TiffMemory::Map(thandle_t self, void** start, toff_t* size) {
    TiffMemory& file = Of(self);
    *start = file.bytes.data();
    *size = file.bytes.size();
    return *size != 0;
}

int TiffMemory::NoteError(TIFF*, void* self, const char*, const char* format, va_list values) {
    TiffMemory& file = Of(self);
    if (!file.HasError()) std::vsnprintf(file.error, sizeof file.error, format, values);
    return 1;
}

}  // namespace host
