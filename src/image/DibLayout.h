// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tavrix/tavrix.h"

// Sizes and parts of a packed device-independent bitmap. Arithmetic is in 64 bits; the sides that the library
// works on are at most kMaxSide pixels.
namespace tavrix {

inline constexpr std::int32_t kMaxSide = 32767;
inline constexpr std::size_t kHeaderBytes = 40;

// Bytes of one row: whole 32-bit words.
constexpr std::size_t RowBytesOf(unsigned bitCount, std::int64_t width) {
    return static_cast<std::size_t>((bitCount * width + 31) / 8 & ~std::int64_t{3});
}

// Clears the bytes of a row in which it may have padding, before its pixels are written.
inline void ClearPadding(std::uint8_t* row, std::size_t rowBytes) {
    constexpr std::size_t kMostPadding = 4;
    if (rowBytes != 0) std::memset(row + rowBytes - kMostPadding, 0, kMostPadding);
}

// Entries of a full colour table: none for 24 bits.
constexpr std::uint32_t ColourCountOf(unsigned bitCount) {
    return bitCount <= 8 ? 1u << bitCount : 0;
}

constexpr std::size_t TableBytesOf(unsigned bitCount) {
    return 4 * std::size_t{ColourCountOf(bitCount)};
}

// Bytes of a whole block: header, colour table and pixel rows of so many bytes.
constexpr std::size_t BlockBytesOf(unsigned bitCount, std::size_t pixelBytes) {
    return kHeaderBytes + TableBytesOf(bitCount) + pixelBytes;
}

// Where header, colour table and pixel rows lie in a block.
inline DibRecord PartsOf(void* block, unsigned bitCount) {
    auto* bytes = static_cast<std::uint8_t*>(block);
    return {reinterpret_cast<BITMAPINFOHEADER*>(bytes), reinterpret_cast<RGBQUAD*>(bytes + kHeaderBytes),
            bytes + kHeaderBytes + TableBytesOf(bitCount)};
}

}  // namespace tavrix
