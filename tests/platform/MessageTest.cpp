// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <iconv.h>

#include <string>

#include "image/ImageTool.h"
#include "platform/Message.h"
#include "tavrix/message_handler.h"

namespace tavrix {
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
    EXPECT_STREQ(platform::kNoImage.utf8, "Open Image File Fist");
    EXPECT_STREQ(platform::kBmpWriteError.utf8, "Write BMP error");
    EXPECT_STREQ(platform::kUnknownMode.utf8,
                 "\xE9\x9D\x9E\xE6\x8E\xA5\xE5\x8F\x97\xE4\xB9\x8B\xE4\xBA\x8C\xE5\x80\xBC\xE5\x8C\x96\xE6"
                 "\xA0\xBC\xE5\xBC\x8F");
    EXPECT_STREQ(platform::kUnknownMode.codePage950,
                 "\xAB\x44\xB1\xB5\xA8\xFC\xA4\xA7\xA4\x47\xAD\xC8\xA4\xC6\xAE\xE6\xA6\xA1");
    for (const platform::Message& message :
         {platform::kNoImage, platform::kBmpWriteError, platform::kUnknownMode}) {
        const std::string converted = Utf8OfCodePage950(message.codePage950);
        if (converted == "no table") GTEST_SKIP() << "this system cannot convert code page 950";
        EXPECT_EQ(converted, message.utf8);
    }
}

TEST(Message, GoesToTheInstalledHandlerElseToStandardError) {
    std::string heard;
    TavrixSetMessageHandler(
        [](const char* text, void* context) { *static_cast<std::string*>(context) += text; }, &heard);
    ImageTool withoutImage(nullptr);
    EXPECT_EQ(heard, "Open Image File Fist");
    TavrixSetMessageHandler(nullptr, nullptr);
    testing::internal::CaptureStderr();
    platform::ShowMessage(platform::kUnknownMode);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(platform::kUnknownMode.utf8) + "\n");
    EXPECT_EQ(heard, "Open Image File Fist");
}

}  // namespace
}  // namespace tavrix
