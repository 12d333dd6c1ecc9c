// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace host {

// Progress over many files on standard error. Not safe for several threads at once.
class Progress {
  public:
    Progress(std::size_t total, bool isQuiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // One more file is through.
    void Advance(const std::string& file, const std::string& what);
    // A line that stays above the bar; control characters in it are spelled out.
    void Say(const std::string& line);
    // The closing line of a run over many files.
    void Close(const std::string& line);

  private:
    using Clock = std::chrono::steady_clock;

    void DrawBar();
    void ClearBar();

    bool isQuiet;
    enum { kSilent, kLines, kBar } style;
    std::size_t total;
    std::size_t done = 0;
    Clock::time_point start = Clock::now();
    Clock::time_point lastDrawn = {};
};

}  // namespace host
