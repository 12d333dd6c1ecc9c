// SPDX-License-Identifier: MIT
//
// What a host pays that calls in a loop with the C library as it comes, against one that has told it to keep
// memory (mallopt): processor time and page faults a call, for every mode on pictures of three sizes.
//
//     tavrix_loop_bench [bits]     8 or 24; 8 when not given
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "Pages.h"
#include "api/BinarizationModes.h"
#include "image/DibLayout.h"

namespace tavrix::bench {
namespace {

struct Cost {
    double milliseconds;  // median, of user and system time
    double faults;
};

constexpr int kRounds = 3;         // of either setting, in turns
constexpr double kBudget = 6.0e7;  // pixels a round
constexpr int kKeptBytes = 1 << 30;

void KeepMemory() {
    mallopt(M_MMAP_THRESHOLD, kKeptBytes);
    mallopt(M_TRIM_THRESHOLD, kKeptBytes);
    mallopt(M_MMAP_MAX, 0);
}

double Now() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}
long Faults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// The host has its picture in place, restores it before every call, and frees what it gets.
Cost Loop(const DibImage& page, int mode) {
    HGLOBAL handle = nullptr;
    if (!page.ExportToHandle(&handle)) std::abort();
    void* block = GlobalLock(handle);
    const std::vector<char> picture(static_cast<char*>(block),
                                    static_cast<char*>(block) + GlobalSize(handle));
    const int calls = std::clamp(static_cast<int>(kBudget / page.Width() / page.Height()), 5, 200);
    std::vector<double> times;
    long faults = 0;
    for (int i = -2; i < calls; ++i) {
        std::memcpy(block, picture.data(), picture.size());
        const long faultsBefore = Faults();
        const double start = Now();
        DibRecord result{};
        Binarized(handle, &result, mode);
        GlobalFree(GlobalHandle(result.header));
        const double end = Now();
        if (i < 0) continue;
        times.push_back(end - start);
        faults += Faults() - faultsBefore;
    }
    std::nth_element(times.begin(), times.begin() + calls / 2, times.end());
    return {times[calls / 2], static_cast<double>(faults) / calls};
}

// In a process of its own, so that each starts with fresh memory.
Cost InChild(const DibImage& page, int mode, bool keeps) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    const pid_t child = fork();
    Cost cost{};
    if (child == 0) {
        if (keeps) KeepMemory();
        cost = Loop(page, mode);
        _exit(write(ends[1], &cost, sizeof cost) == sizeof cost ? 0 : 1);
    }
    close(ends[1]);
    if (child < 0 || read(ends[0], &cost, sizeof cost) != sizeof cost) std::abort();
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return cost;
}

void Compare(const char* name, const DibImage& page, int mode) {
    Cost kept{1e9, 0}, plain{1e9, 0};
    for (int round = 0; round < kRounds; ++round) {
        const auto better = [](const Cost& a, const Cost& b) { return a.milliseconds < b.milliseconds; };
        kept = std::min(kept, InChild(page, mode, true), better);
        plain = std::min(plain, InChild(page, mode, false), better);
    }
    std::printf("%-8s mode %d  %8.3f ms kept  %8.3f ms as it comes  ratio %.2f  %6.0f faults a call\n", name,
                mode, kept.milliseconds, plain.milliseconds, plain.milliseconds / kept.milliseconds,
                plain.faults);
}

}  // namespace
}  // namespace tavrix::bench

int main(int count, char** arguments) {
    using namespace tavrix;
    const std::string_view depth = count > 1 ? arguments[1] : "8";
    if (count > 2 || (depth != "8" && depth != "24")) {
        std::fprintf(
            stderr, "usage: %s [8|24]\nThe argument is the pictures' number of bits a pixel; 8 without it.\n",
            arguments[0]);
        return 2;
    }
    const int bits = depth == "8" ? 8 : 24;
    struct {
        const char* name;
        int width, height;
    } const pictures[] = {{"card", 1280, 720}, {"receipt", 900, 1300}, {"photo", 4000, 3000}};
    for (const auto& picture : pictures) {
        const auto page = bench::CardPage(picture.width, picture.height, bits);
        for (const api::Method& method : api::kWholeImageModes) {
            bench::Compare(picture.name, *page, method.mode);
        }
    }
}
