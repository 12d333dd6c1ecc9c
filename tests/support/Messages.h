// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tavrix/message_handler.h"

namespace tavrix::test {

// Hears the library's messages while it lives.
class Messages {
  public:
    Messages() { TavrixSetMessageHandler(Take, this); }
    ~Messages() { TavrixSetMessageHandler(nullptr, nullptr); }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    std::vector<std::string> texts;

  private:
    static void Take(const char* text, void* self) { static_cast<Messages*>(self)->texts.emplace_back(text); }
};

}  // namespace tavrix::test
