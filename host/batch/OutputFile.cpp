// SPDX-License-Identifier: MIT
#include "batch/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "batch/Jobs.h"
#include "batch/TemporaryNames.h"
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

constexpr char kSourceAttribute[] = "user.tavrix.source";

// What the new file gets from the one in its place, or as a new one.
struct Properties {
    mode_t mode = kNewFileMode;
    uid_t owner = geteuid();
    gid_t group = getegid();
    std::string source;  // relative to the folder; empty for none
};

// The content and all properties, safe on the disk; 0, or errno.
int Fill(int file, std::span<const std::uint8_t> bytes, const Properties& properties) {
    if (!WriteAll(file, bytes)) return errno;
    if (properties.owner != geteuid() || properties.group != getegid()) {
        [[maybe_unused]] const int tried = fchown(file, properties.owner, properties.group);  // root can
    }
    // Where there are no permissions to set, those that the file system gives are all there is.
    if (fchmod(file, properties.mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) return errno;
    if (!properties.source.empty()) {  // some file systems have no attributes
        fsetxattr(file, kSourceAttribute, properties.source.data(), properties.source.size(), 0);
    }
    return fsync(file) == 0 ? 0 : errno;
}

// By a file without a name, where the file system and /proc allow; false where they do not. code: 0, or
// what went wrong.
bool WriteUnnamed(const fs::path& target, std::span<const std::uint8_t> bytes, const Properties& properties,
                  int& code) {
    const fs::path folder = target.parent_path();
    Descriptor file(open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    const std::string link = "/proc/self/fd/" + std::to_string(file.Get());
    if (file.Get() < 0 || access(link.c_str(), F_OK) != 0) return false;
    code = Fill(file.Get(), bytes, properties);
    if (code != 0) return true;
    const auto nameIt = [&link](const char* name) {
        return linkat(AT_FDCWD, link.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
    };
    code = nameIt(target.c_str());
    if (code != EEXIST) return code == 0;
    TemporaryName temporary(folder, nameIt);
    code = temporary.Error() != 0 ? temporary.Error() : temporary.RenameTo(target);
    return true;
}

int WriteNamed(const fs::path& target, std::span<const std::uint8_t> bytes, const Properties& properties) {
    int number = -1;
    TemporaryName temporary(target.parent_path(), [&number](const char* name) {
        number = open(name, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        return number < 0 ? errno : 0;
    });
    if (temporary.Error() != 0) return temporary.Error();
    Descriptor file(number);
    const int code = Fill(file.Get(), bytes, properties);
    if (code != 0) return code;
    return file.Close() ? temporary.RenameTo(target) : errno;
}

// The absolute path without links to folders, so that relative paths between two hold.
fs::path Absolute(const fs::path& path) {
    std::error_code error;
    fs::path folder = fs::weakly_canonical(fs::absolute(path).parent_path(), error);
    return folder / path.filename();
}

}  // namespace

void WriteStandardOutput(std::span<const std::uint8_t> bytes) {
    if (!WriteAll(STDOUT_FILENO, bytes)) Fail("standard output", errno);
}

void WriteWhole(const std::string& path, std::span<const std::uint8_t> bytes, const std::string& source) {
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
    if (target.has_parent_path() && !fs::create_directories(target.parent_path(), error) && error)
        Fail(path, error.value());
    Properties properties;
    struct stat old = {};
    if (stat(target.c_str(), &old) == 0) {
        properties.mode = old.st_mode & 07777;
        properties.owner = old.st_uid;
        properties.group = old.st_gid;
    }
    if (!source.empty() && source != "-") {
        properties.source = Absolute(source).lexically_relative(Absolute(target).parent_path()).string();
    }
    const DiskWait wait;  // not for fsync alone: a new file waits for the blocks of those before it
    int code = 0;
    if (!WriteUnnamed(target, bytes, properties, code)) code = WriteNamed(target, bytes, properties);
    if (code != 0) Fail(path, code);
}

std::string SourceOf(const std::string& path) {
    char source[PATH_MAX];
    const ssize_t size = getxattr(path.c_str(), kSourceAttribute, source, sizeof source);
    if (size <= 0) return {};
    const std::string relative(source, static_cast<std::size_t>(size));
    return (Absolute(path).parent_path() / relative).lexically_normal().string();
}

}  // namespace host
