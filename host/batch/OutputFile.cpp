// SPDX-License-Identifier: MIT
#include "batch/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "picture/Picture.h"

namespace fs = std::filesystem;

namespace host {
namespace {

// A descriptor that closes itself, and whose close is checked where it counts.
class Descriptor {
  public:
    explicit Descriptor(int value) : number(value) {}
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return number; }
    bool Close() {
        const int closing = number;
        number = -1;
        return close(closing) == 0;
    }

  private:
    int number;
};

bool WriteAll(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

[[noreturn]] void Fail(const std::string& path, int code) {
    FailWriting("cannot write " + path + ": " + std::strerror(code));
}

// The permissions that an ordinary new file gets.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

const mode_t kNewFileMode = NewFileMode();  // before any thread starts: umask is the process's

}  // namespace

void WriteStandardOutput(std::span<const std::uint8_t> bytes) {
    if (!WriteAll(STDOUT_FILENO, bytes)) Fail("standard output", errno);
}

void WriteWhole(const std::string& path, std::span<const std::uint8_t> bytes) {
    if (path == "-") return WriteStandardOutput(bytes);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) Fail(path, EISDIR);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        if (device.Get() < 0 || !WriteAll(device.Get(), bytes) || !device.Close()) Fail(path, errno);
        return;
    }
    // A link to a file keeps pointing to it.
    error.clear();  // that nothing is there yet is none
    const fs::path target = fs::exists(status) ? fs::canonical(path, error) : fs::path(path);
    if (error) Fail(path, error.value());
    if (target.has_parent_path()) fs::create_directories(target.parent_path(), error);
    std::string temporary = (target.parent_path() / (".tavrix-XXXXXX")).string();
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.Get() < 0) Fail(path, errno);
    const bool isDone = WriteAll(file.Get(), bytes) && fchmod(file.Get(), kNewFileMode) == 0 &&
                        file.Close() && std::rename(temporary.c_str(), target.c_str()) == 0;
    if (!isDone) {
        const int code = errno;
        unlink(temporary.c_str());
        Fail(path, code);
    }
}

}  // namespace host
