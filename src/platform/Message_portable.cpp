// SPDX-License-Identifier: MIT
#include <cstdio>
#include <mutex>
#include <shared_mutex>

#include "platform/Message.h"
#include "tavrix/message_handler.h"

namespace {

struct Installed {
    TavrixMessageHandler handler;
    void* context;
};

constinit std::mutex installedMutex;
constinit Installed installed{nullptr, nullptr};

// Held while a handler runs; by a handler that leads to another message, once.
std::shared_mutex running;  // no constinit: not every standard library can
constinit thread_local int depth = 0;

class RunningHandler {
  public:
    RunningHandler() {
        if (depth++ == 0) running.lock_shared();
    }
    ~RunningHandler() {
        if (--depth == 0) running.unlock_shared();
    }
    RunningHandler(const RunningHandler&) = delete;
    RunningHandler& operator=(const RunningHandler&) = delete;
};

Installed Current() {
    const std::lock_guard guard(installedMutex);
    return installed;
}

}  // namespace

extern "C" void TavrixSetMessageHandler(TavrixMessageHandler handler, void* context) {
    {
        const std::lock_guard guard(installedMutex);
        installed = {handler, context};
    }
    if (depth > 0) return;  // a handler that waited would wait for itself
    const std::lock_guard untilTheOldHasEnded(running);
}

namespace tavrix::platform {

void ShowMessage(const Message& message) {
    const RunningHandler hold;
    const Installed current = Current();
    if (current.handler != nullptr) {
        current.handler(message.utf8, current.context);
    } else {
        std::fprintf(stderr, "%s\n", message.utf8);
    }
}

}  // namespace tavrix::platform
