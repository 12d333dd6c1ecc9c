// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace host {

// From now on a termination signal (SIGTERM, SIGINT, SIGHUP, unless ignored) removes temporary files before
// it ends the process. Call before any thread is started.
void RemoveTemporariesOnSignals();

// A name beside a file for the time until it gets its own. The file of that name goes with the object.
class TemporaryName {
  public:
    // make gets a name and makes the file: 0, or errno; EEXIST asks for another name.
    // folder: empty for the current one.
    TemporaryName(const std::string& folder, const std::function<int(const char* name)>& make);
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    int Error() const { return error; }  // of make
    // Renames the file; 0, or errno.
    int RenameTo(const std::string& path);

    // Names of this kind are never inputs.
    static bool IsOne(const std::string& fileName);

  private:
    std::string name;
    int error = 0;
};

}  // namespace host
