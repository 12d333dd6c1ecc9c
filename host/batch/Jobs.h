// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batch/Inputs.h"

namespace host {

// What the command returns to the shell.
enum ExitCode { kDone = 0, kSomeFailed = 1, kUsage = 2, kNothingReadable = 3, kOutputUnwritable = 4 };

struct JobOptions {
    int threads = 1;  // 0: one a core
    bool isQuiet = false;
};

// What became of one input.
struct Outcome {
    std::string text;                // for standard output
    std::vector<std::string> notes;  // for standard error, each with the file's name before it
    bool isRead = false;             // at least one page could be read
    bool isSkipped = false;
};

// Runs work on every input, on several threads, and reports on standard error: failures always, each
// with the file's name, and progress over several inputs (a bar on a terminal, lines elsewhere). Texts
// go to standard output in the order of the inputs. A line with the counts closes a run over several. work
// throws PictureError for a picture that failed.
ExitCode RunJobs(const InputList& inputs, const JobOptions& options,
                 const std::function<void(const Input&, Outcome&)>& work);

// While one of these lives, its thread waits for the disk: the run may work on another picture meanwhile.
class DiskWait {
  public:
    DiskWait();
    ~DiskWait();
    DiskWait(const DiskWait&) = delete;
    DiskWait& operator=(const DiskWait&) = delete;
};

}  // namespace host
