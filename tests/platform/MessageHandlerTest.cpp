// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "platform/Message.h"
#include "tavrix/message_handler.h"

namespace tavrix::platform {
namespace {

using std::chrono_literals::operator""ms;

struct Pause {
    std::promise<void> entered, released;
};

TEST(MessageHandler, RunsNowhereOnceItIsReplaced) {
    Pause pause;
    TavrixSetMessageHandler(
        [](const char*, void* context) {
            auto& self = *static_cast<Pause*>(context);
            self.entered.set_value();
            self.released.get_future().wait();
        },
        &pause);
    std::thread speaker([] { ShowMessage(kNoImage); });
    pause.entered.get_future().wait();
    auto replaced = std::async(std::launch::async, [] { TavrixSetMessageHandler(nullptr, nullptr); });
    EXPECT_EQ(replaced.wait_for(50ms), std::future_status::timeout);
    pause.released.set_value();
    EXPECT_EQ(replaced.wait_for(5000ms), std::future_status::ready);
    speaker.join();
}

TEST(MessageHandler, MayReplaceItselfAndLeadToAnotherMessage) {
    static int heard;
    heard = 0;
    const auto second = [](const char*, void*) { heard += 10; };
    static const TavrixMessageHandler next = second;
    TavrixSetMessageHandler(
        [](const char*, void*) {
            ++heard;
            TavrixSetMessageHandler(next, nullptr);
            ShowMessage(kNoImage);
        },
        nullptr);
    ShowMessage(kNoImage);
    TavrixSetMessageHandler(nullptr, nullptr);
    EXPECT_EQ(heard, 11);
}

}  // namespace
}  // namespace tavrix::platform
