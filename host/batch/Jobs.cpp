// SPDX-License-Identifier: MIT
#include "batch/Jobs.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <new>
#include <semaphore>
#include <span>
#include <system_error>
#include <thread>

#include "batch/OutputFile.h"
#include "batch/Progress.h"
#include "picture/Picture.h"
#include "tavrix/message_handler.h"

namespace host {
namespace {

// Those that may work at the same time; null outside of runs with more threads.
thread_local std::counting_semaphore<>* seats = nullptr;

class Run {
  public:
    Run(const InputList& allInputs, const JobOptions& options, std::size_t jobs,
        const std::function<void(const Input&, Outcome&)>& task)
        : inputs(allInputs),
          work(task),
          progress(allInputs.size(), options.isQuiet),
          freeSeats(static_cast<std::ptrdiff_t>(jobs)) {
        TavrixSetMessageHandler(PassMessage, this);
    }
    ~Run() { TavrixSetMessageHandler(nullptr, nullptr); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Takes inputs until none is left.
    void WorkThrough() {
        freeSeats.acquire();
        seats = &freeSeats;
        for (std::size_t i = next++; i < inputs.size() && !isCut; i = next++) WorkOn(i);
        seats = nullptr;
        freeSeats.release();
    }

    // "n done, n skipped (not a picture), n failed", and what else was left out.
    void Close() {
        if (inputs.size() + inputs.notPictures + inputs.earlierOutputs < 2) return;
        const auto count = [](std::size_t files, const char* what) { return std::to_string(files) + what; };
        std::string line = "tavrix: " + count(done, " done, ");
        if (skipped != 0) line += count(skipped, " skipped (done before), ");
        if (inputs.earlierOutputs != 0)
            line += count(inputs.earlierOutputs, " skipped (made by an earlier run), ");
        progress.Close(line + count(inputs.notPictures, " skipped (not a picture), ") +
                       count(failed, " failed"));
    }

    ExitCode Code() const {
        if (isUnwritable) return kOutputUnwritable;
        if (!isAnyRead) return kNothingReadable;
        return failed != 0 ? kSomeFailed : kDone;
    }

  private:
    void WorkOn(std::size_t index) {
        const Input& input = inputs[index];
        Outcome outcome;
        std::string reason;
        PictureError::Kind kind = PictureError::kFailed;
        current = &input;
        try {
            work(input, outcome);
        } catch (const PictureError& error) {
            kind = error.kind;
            reason = error.what();
        } catch (const std::bad_alloc&) {
            reason = "out of memory";
        } catch (const std::exception& error) {
            reason = error.what();
        }
        current = nullptr;

        const std::lock_guard lock(mutex);
        isAnyRead |= outcome.isRead || outcome.isSkipped;
        for (const std::string& note : outcome.notes) progress.Say("tavrix: " + input.path + ": " + note);
        if (!reason.empty()) {
            ++failed;
            isUnwritable |= kind == PictureError::kUnwritable;
            progress.Say("tavrix: " + input.path + ": " + reason);
        }
        if (reason.empty()) ++(outcome.isSkipped ? skipped : done);
        progress.Advance(input.path, !reason.empty() ? "failed" : outcome.isSkipped ? "skipped" : "done");
        waiting[index] = std::move(outcome.text);
        PassOnTexts();
    }

    // Texts leave in the order of the inputs, whichever thread was first.
    void PassOnTexts() {
        for (auto text = waiting.begin(); text != waiting.end() && text->first == nextText;
             text = waiting.erase(text), ++nextText) {
            if (text->second.empty() || isCut) continue;
            try {
                WriteStandardOutput(
                    {reinterpret_cast<const std::uint8_t*>(text->second.data()), text->second.size()});
            } catch (const PictureError& error) {
                progress.Say(std::string("tavrix: ") + error.what());
                isUnwritable = isCut = true;
            }
        }
    }

    static void PassMessage(const char* text, void* self) {
        Run& run = *static_cast<Run*>(self);
        const std::lock_guard lock(run.mutex);
        run.progress.Say("tavrix: " + (current != nullptr ? current->path + ": " : "") + text);
    }

    static thread_local const Input* current;

    const InputList& inputs;
    const std::function<void(const Input&, Outcome&)>& work;
    std::mutex mutex;
    Progress progress;
    std::counting_semaphore<> freeSeats;
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isCut = false;  // nobody reads standard output any more
    std::map<std::size_t, std::string> waiting;
    std::size_t nextText = 0;
    bool isAnyRead = false;
    std::size_t done = 0;
    std::size_t skipped = 0;
    std::size_t failed = 0;
    bool isUnwritable = false;
};

thread_local const Input* Run::current = nullptr;

}  // namespace

DiskWait::DiskWait() {
    if (seats != nullptr) seats->release();
}

DiskWait::~DiskWait() {
    if (seats != nullptr) seats->acquire();
}

ExitCode RunJobs(const InputList& inputs, const JobOptions& options,
                 const std::function<void(const Input&, Outcome&)>& work) {
    const unsigned asked =
        options.threads > 0 ? static_cast<unsigned>(options.threads) : std::thread::hardware_concurrency();
    const std::size_t jobs = std::min<std::size_t>(std::max(asked, 1U), inputs.size());
    // Several jobs have one more thread, which works while another one waits for the disk.
    const std::size_t threadCount = jobs > 1 && jobs < inputs.size() ? jobs + 1 : jobs;
    Run run(inputs, options, jobs, work);
    std::vector<std::jthread> threads;
    try {
        for (std::size_t i = 1; i < threadCount; ++i) threads.emplace_back([&run] { run.WorkThrough(); });
    } catch (const std::system_error&) {  // those that could be started do the work
    }
    run.WorkThrough();
    threads.clear();
    run.Close();
    return run.Code();
}

}  // namespace host
