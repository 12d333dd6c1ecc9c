// SPDX-License-Identifier: MIT
#include "Block.h"

#include <cstdio>
#include <cstdlib>

namespace tavrix::fuzz {
namespace {

constexpr std::uint32_t kHeaderBytes = 40;

std::uint32_t ColoursOf(int bitCount) {
    return bitCount == 24 ? 0 : 1u << bitCount;
}

std::uint32_t RowBytesOf(int bitCount, std::int64_t width) {
    return static_cast<std::uint32_t>((bitCount * width + 31) / 32 * 4);
}

}  // namespace

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

Block::Block(Input& input, int bitCount, int maxSide) {
    const int width = input.Below(maxSide + 1), height = input.Below(maxSide + 1);
    const std::uint32_t colours = ColoursOf(bitCount), bytes = RowBytesOf(bitCount, width) * height;
    handle = GlobalAlloc(GHND, kHeaderBytes + 4 * colours + bytes);
    auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
    Require(block != nullptr, "memory for the image");
    record = {reinterpret_cast<BITMAPINFOHEADER*>(block), reinterpret_cast<RGBQUAD*>(block + kHeaderBytes),
              block + kHeaderBytes + 4 * colours};
    *record.header = {kHeaderBytes, width, height, 1, static_cast<std::uint16_t>(bitCount), 0, bytes, 0, 0,
                      colours,      0};
    for (std::uint32_t i = 1; i < colours; ++i) {
        const auto level = static_cast<std::uint8_t>(255 * i / (colours - 1));
        record.palette[i] = {level, level, level, 0};
    }
    input.Fill(record.bits, bytes);
}

Block::Block(const DibRecord& result) : handle(GlobalHandle(result.header)), record(result) {
    Require(handle != nullptr, "a result is a block of global memory");
    const BITMAPINFOHEADER& header = *record.header;
    const std::uint32_t colours = ColoursOf(header.biBitCount);
    Require(header.biBitCount == 1 || header.biBitCount == 8 || header.biBitCount == 24, "depth");
    Require(header.biClrUsed == colours, "colours of a result");
    Require(header.biSizeImage == RowBytesOf(header.biBitCount, header.biWidth) * header.biHeight, "size");
    Require(GlobalSize(handle) >= kHeaderBytes + 4 * colours + header.biSizeImage, "room of a result");
    Require(static_cast<void*>(record.palette) == record.header + 1, "place of the colour table");
    Require(static_cast<void*>(record.bits) == record.palette + colours, "place of the rows");
}

Block::~Block() {
    GlobalFree(handle);
}

std::vector<std::uint8_t> Block::Bytes() const {
    const auto* block = reinterpret_cast<const std::uint8_t*>(record.header);
    return {block, block + GlobalSize(handle)};
}

int TakeDepth(Input& input) {
    constexpr int kDepths[] = {1, 8, 24};
    return kDepths[input.Below(3)];
}

void TakeBack(const DibRecord& result) {
    if (result.header != nullptr) const Block freed(result);
}

}  // namespace tavrix::fuzz
