// SPDX-License-Identifier: MIT
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// A TIFF file in memory. libtiff's handle works on it; its first complaint is kept.
class TiffMemory {
  public:
    // mode: "r" on the given bytes, "w" on an empty vector.
    // maxBytes: what libtiff may ask for at a time; 0 for no limit.
    TiffMemory(std::vector<std::uint8_t> content, const char* mode, std::int64_t maxBytes = 0);
    ~TiffMemory();
    TiffMemory(const TiffMemory&) = delete;
    TiffMemory& operator=(const TiffMemory&) = delete;

    TIFF* Handle() const { return handle; }
    // Complaints so far do not count.
    void ForgetErrors() { error[0] = 0; }
    bool HasError() const { return error[0] != 0; }
    std::string Reason() const {
        return std::string("TIFF: ") + (HasError() ? error : "the data is damaged");
    }
    // Closes the handle; the bytes of the file that was written.
    std::vector<std::uint8_t> Finish();

  private:
    static tsize_t Read(thandle_t self, void* to, tsize_t count);
    static tsize_t Write(thandle_t self, void* from, tsize_t count);
    static toff_t Seek(thandle_t self, toff_t offset, int whence);
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t self);
    static int Map(thandle_t self, void** start, toff_t* size);
    static void Unmap(thandle_t, void*, toff_t) {}
    static int NoteError(TIFF*, void* self, const char* module, const char* format, va_list values);
    static int IgnoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

    std::vector<std::uint8_t> bytes;
    toff_t at = 0;
    char error[256] = "";  // callbacks may not throw, as a string might
    TIFF* handle = nullptr;
};

}  // namespace host
