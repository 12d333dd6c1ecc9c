// SPDX-License-Identifier: MIT
#include "batch/Jobs.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <new>
#include <span>
#include <thread>

#include "batch/OutputFile.h"
#include "batch/Progress.h"
#include "picture/Picture.h"
#include "tavrix/message_handler.h"

namespace host {
namespace {

class Run {
  public:
    Run(const std::vector<Input>& allInputs, const JobOptions& options,
        const std::function<void(const Input&, Outcome&)>& task)
        : inputs(allInputs), work(task), progress(allInputs.size(), options.isQuiet) {
        TavrixSetMessageHandler(PassMessage, this);
    }
    ~Run() { TavrixSetMessageHandler(nullptr, nullptr); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Takes inputs until none is left.
    void WorkThrough() {
        for (std::size_t i = next++; i < inputs.size() && !isCut; i = next++) WorkOn(i);
    }

    ExitCode Code() const {
        if (isUnwritable) return kOutputUnwritable;
        if (!isAnyRead) return kNothingReadable;
        return hasFailed ? kSomeFailed : kDone;
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
            hasFailed = true;
            isUnwritable |= kind == PictureError::kUnwritable;
            progress.Say("tavrix: " + input.path + ": " + reason);
        }
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

    const std::vector<Input>& inputs;
    const std::function<void(const Input&, Outcome&)>& work;
    std::mutex mutex;
    Progress progress;
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isCut = false;  // nobody reads standard output any more
    std::map<std::size_t, std::string> waiting;
    std::size_t nextText = 0;
    bool isAnyRead = false;
    bool hasFailed = false;
    bool isUnwritable = false;
};

thread_local const Input* Run::current = nullptr;

}  // namespace

ExitCode RunJobs(const std::vector<Input>& inputs, const JobOptions& options,
                 const std::function<void(const Input&, Outcome&)>& work) {
    Run run(inputs, options, work);
    const unsigned asked =
        options.threads > 0 ? static_cast<unsigned>(options.threads) : std::thread::hardware_concurrency();
    const std::size_t threadCount = std::min<std::size_t>(std::max(asked, 1U), inputs.size());
    std::vector<std::jthread> threads;
    for (std::size_t i = 1; i < threadCount; ++i) threads.emplace_back([&run] { run.WorkThrough(); });
    run.WorkThrough();
    threads.clear();
    return run.Code();
}

}  // namespace host
