// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

#include "picture/HostImage.h"

namespace host {

// Dots per inch; 0 where the file does not say.
struct Resolution {
    double x = 0;
    double y = 0;
    bool IsKnown() const { return x > 0 && y > 0; }
    bool operator==(const Resolution&) const = default;
};

inline constexpr double kMetresPerInch = 0.0254;
inline constexpr double kCentimetresPerInch = 2.54;

// One page of a picture file. The resolution travels beside the image: the library writes a value of
// its own into the headers of its results.
struct Picture {
    HostImage image;
    Resolution resolution;
};

// What went wrong with one picture; the kind decides the exit code.
class PictureError : public std::runtime_error {
  public:
    enum Kind { kUnreadable, kUnwritable, kFailed };
    PictureError(Kind errorKind, const std::string& reason) : std::runtime_error(reason), kind(errorKind) {}
    Kind kind;
};

[[noreturn]] inline void FailReading(const std::string& reason) {
    throw PictureError(PictureError::kUnreadable, reason);
}

[[noreturn]] inline void FailWriting(const std::string& reason) {
    throw PictureError(PictureError::kUnwritable, reason);
}

// Most pixels of a page, unless the user says otherwise.
inline constexpr std::int64_t kMaxPixels = 300'000'000;

// Refuses pictures that the library cannot take or nobody wants before memory is spent on them.
inline void CheckSize(std::int64_t width, std::int64_t height, std::int64_t maxPixels) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide) {
        FailReading(size + ": sides must be 1 to " + std::to_string(kMaxSide));
    }
    if (width * height > maxPixels) {
        FailReading(size + " are more than " + std::to_string(maxPixels) + " (--max-pixels allows more)");
    }
}

}  // namespace host
