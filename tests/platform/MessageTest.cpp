// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <iconv.h>

#include <string>

#include "platform/Message.h"
#include "support/Messages.h"

namespace tavrix::platform {
namespace {

// What the system's own table makes of code page 950.
std::string Utf8OfCodePage950(const char* text) {
    const iconv_t converter = iconv_open("UTF-8", "CP950");
    if (converter == reinterpret_cast<iconv_t>(-1)) return "no table";
    std::string in = text, out(200, '\0');
    char *from = in.data(), *to = out.data();
    std::size_t fromLeft = in.size(), toLeft = out.size();
    EXPECT_EQ(iconv(converter, &from, &fromLeft, &to, &toLeft), 0u);
    iconv_close(converter);
    return out.substr(0, out.size() - toLeft);
}

TEST(Message, TextsAreTheSameInBothEncodings) {
    for (const Message& message : {kNoImage, kBmpWriteError, kUnknownMode}) {
        const std::string converted = Utf8OfCodePage950(message.codePage950);
        if (converted == "no table") GTEST_SKIP() << "this system cannot convert code page 950";
        EXPECT_EQ(converted, message.utf8);
    }
}

TEST(Message, GoesToTheInstalledHandlerElseToStandardError) {
    testing::internal::CaptureStderr();
    {
        const test::Messages messages;
        ShowMessage(kUnknownMode);
        EXPECT_EQ(messages.texts, std::vector<std::string>{kUnknownMode.utf8});
    }
    ShowMessage(kNoImage);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(kNoImage.utf8) + "\n");
}

}  // namespace
}  // namespace tavrix::platform
