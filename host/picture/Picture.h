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

// Refuses pictures that the library cannot take before memory is spent on them.
inline void CheckSides(std::int64_t width, std::int64_t height) {
    if (width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide) return;
    FailReading(std::to_string(width) + " x " + std::to_string(height) + " pixels: sides must be 1 to " +
                std::to_string(kMaxSide));
}

}  // namespace host
