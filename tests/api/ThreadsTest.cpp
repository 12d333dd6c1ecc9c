// SPDX-License-Identifier: MIT
// Every export from eight threads at once while the message handler is replaced. Says most under the thread
// sanitizer and under memcheck.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "api/ExportCalls.h"
#include "support/HostImage.h"
#include "tavrix/component_store.hpp"
#include "tavrix/message_handler.h"

namespace tavrix::test {
namespace {

// What the call gives, with the image that it may have worked on; all calls on the same picture are alike.
std::vector<std::uint8_t> SeenAfter(const ExportCall& call, int bitCount) {
    const HostImage image = HostImage::Drawn(50, 40, bitCount, 3);
    host::Store store;
    if (call.Is(kNeedsTree)) Extract_Eight_Connected_Components(image.Record(), store.get(), 1, 0, 0);
    DibRecord record{};
    call({image.Handle(), image.Record(), store.get()}, &record);
    std::vector<std::uint8_t> seen;
    if (GlobalFlags(image.Handle()) != GMEM_INVALID_HANDLE) seen = image.Bytes();
    if (record.header != nullptr) {
        const std::vector<std::uint8_t> bytes = HostImage(record).Bytes();
        seen.insert(seen.end(), bytes.begin(), bytes.end());
    }
    return seen;
}

TEST(Threads, DoNotMeet) {
    struct Heard {
        std::atomic<bool> isInstalled = false;
        std::atomic<int> missed = 0;
    };
    Heard heard;
    const auto hear = [](const char* text, void* context) {
        auto& self = *static_cast<Heard*>(context);
        if (!self.isInstalled || std::strlen(text) == 0) ++self.missed;
    };
    std::atomic<bool> isDone = false;
    std::thread replacer([&] {
        while (!isDone) {
            heard.isInstalled = true;
            TavrixSetMessageHandler(hear, &heard);
            TavrixSetMessageHandler([](const char*, void*) {}, nullptr);
            heard.isInstalled = false;  // from here on the first handler would be wrong
            std::this_thread::yield();
        }
    });
    TavrixSetMessageHandler([](const char*, void*) {}, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (const ExportCall& call : ExportCalls()) {
                for (const int bitCount : {1, 8, 24}) {
                    if (!call.Takes(bitCount)) continue;
                    EXPECT_EQ(SeenAfter(call, bitCount), SeenAfter(call, bitCount)) << call.name;
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    isDone = true;
    replacer.join();
    TavrixSetMessageHandler(nullptr, nullptr);
    EXPECT_EQ(heard.missed, 0);
}

}  // namespace
}  // namespace tavrix::test
