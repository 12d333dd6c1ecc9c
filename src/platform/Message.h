// SPDX-License-Identifier: MIT
#pragma once

namespace tavrix::platform {

// A text for the user, in the encodings that the platforms want: the bytes of code page 950 (Big5) and
// the same text as UTF-8.
struct Message {
    const char* codePage950;
    const char* utf8;
};

inline constexpr Message kNoImage{"Open Image File Fist", "Open Image File Fist"};
inline constexpr Message kBmpWriteError{"Write BMP error", "Write BMP error"};
// "Not an accepted binarization format."
inline constexpr Message kUnknownMode{
    "\xAB\x44\xB1\xB5\xA8\xFC\xA4\xA7\xA4\x47\xAD\xC8\xA4\xC6\xAE\xE6\xA6\xA1", "非接受之二值化格式"};

// Shows a message and waits until it is taken note of: a modal box with the OK button on Windows;
// elsewhere the installed handler or a line on standard error.
void ShowMessage(const Message& message);

}  // namespace tavrix::platform
