// SPDX-License-Identifier: MIT
#include <cstdio>
#include <mutex>

#include "platform/Message.h"
#include "tavrix/message_handler.h"

namespace {

struct Installed {
    TavrixMessageHandler handler;
    void* context;
};

constinit std::mutex installedMutex;
constinit Installed installed{nullptr, nullptr};

}  // namespace

extern "C" void TavrixSetMessageHandler(TavrixMessageHandler handler, void* context) {
    const std::lock_guard guard(installedMutex);
    installed = {handler, context};
}

namespace tavrix::platform {

void ShowMessage(const Message& message) {
    Installed current;
    {
        const std::lock_guard guard(installedMutex);
        current = installed;
    }
    if (current.handler != nullptr) {
        current.handler(message.utf8, current.context);
    } else {
        std::fprintf(stderr, "%s\n", message.utf8);
    }
}

}  // namespace tavrix::platform
