// SPDX-License-Identifier: MIT
#include "batch/Progress.h"

#include <unistd.h>

#include <cstdio>

#include "batch/Printable.h"

namespace host {
namespace {

constexpr int kBarCells = 30;
constexpr std::chrono::milliseconds kRedrawPause{100};

}  // namespace

Progress::Progress(std::size_t fileCount, bool quiet) : isQuiet(quiet), total(fileCount) {
    style = isQuiet || fileCount < 2 ? kSilent : isatty(STDERR_FILENO) ? kBar : kLines;
}

Progress::~Progress() {
    ClearBar();
}

void Progress::Advance(const std::string& file, const std::string& what) {
    ++done;
    if (style == kLines)
        std::fprintf(stderr, "%zu/%zu %s: %s\n", done, total, Printable(file).c_str(), what.c_str());
    if (style == kBar && Clock::now() - lastDrawn >= kRedrawPause) DrawBar();
}

void Progress::Say(const std::string& line) {
    ClearBar();
    std::fprintf(stderr, "%s\n", Printable(line).c_str());
}

void Progress::Close(const std::string& line) {
    if (!isQuiet) Say(line);
}

void Progress::DrawBar() {
    lastDrawn = Clock::now();
    const double seconds = std::chrono::duration<double>(lastDrawn - start).count();
    const double rate = static_cast<double>(done) / (seconds > 0 ? seconds : 1);
    const auto left = static_cast<long>(static_cast<double>(total - done) / rate + 0.5);
    const int cells = static_cast<int>(done * kBarCells / total);
    std::fprintf(stderr, "\r[%.*s%*s] %zu/%zu  %.1f/s  %ld:%02ld left\x1b[K", cells,
                 "##############################", kBarCells - cells, "", done, total, rate, left / 60,
                 left % 60);
}

void Progress::ClearBar() {
    if (style == kBar) std::fputs("\r\x1b[K", stderr);
}

}  // namespace host
