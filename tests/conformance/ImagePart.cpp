// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <fstream>

#include "Digest.h"
#include "Outcome.h"
#include "Page.h"

namespace tavrix::conformance {
namespace {

constexpr std::size_t kBands = 8;  // bands of rows, and of columns, that have a digest of their own

std::size_t BandStart(std::size_t band, std::size_t length) {
    return band * length / kBands;
}

}  // namespace

ImagePart::ImagePart(const DibRecord& record, std::unique_ptr<const ImagePart> imageBefore)
    : before(std::move(imageBefore)), isThere(record.header != nullptr) {
    if (!isThere) return;
    header = *record.header;
    // A call that works in place leaves the host's own pointers behind.
    const auto* table = reinterpret_cast<const std::uint8_t*>(record.header + 1);
    const std::uint8_t* const bits = table + 4 * header.biClrUsed;
    palette.assign(table, bits);
    rows.assign(bits, bits + header.biSizeImage);
    locks = LocksOf(GlobalHandle(record.header));
}

std::size_t ImagePart::RowBytes() const {
    return header.biHeight == 0 ? 0 : rows.size() / static_cast<std::size_t>(header.biHeight);
}

std::string ImagePart::Description() const {
    if (!isThere) return "none";
    if (before != nullptr && DifferenceTo(*before).empty()) return "unchanged";
    const std::size_t height = static_cast<std::size_t>(header.biHeight);
    const std::size_t rowBytes = RowBytes();
    std::string bands;
    std::string strips;
    for (std::size_t band = 0; band < kBands; ++band) {
        const std::size_t from = BandStart(band, height);
        const std::size_t to = BandStart(band + 1, height);
        if (from < to) bands += Digest().Bytes(rows.data() + from * rowBytes, (to - from) * rowBytes).Short();
        const std::size_t left = BandStart(band, rowBytes);
        const std::size_t right = BandStart(band + 1, rowBytes);
        if (left == right || height == 0) continue;
        Digest strip;
        for (std::size_t y = 0; y < height; ++y) strip.Bytes(rows.data() + y * rowBytes + left, right - left);
        strips += strip.Short();
    }
    const std::string size = std::to_string(header.biWidth) + "x" + std::to_string(header.biHeight) + "x" +
                             std::to_string(header.biBitCount);
    Digest head;
    head.Bytes(&header, sizeof header).Bytes(palette.data(), palette.size()).Add(locks);
    std::string text = size + " head " + head.Long();
    if (!rows.empty()) text += " rows " + bands + " columns " + strips;
    return text;
}

std::string ImagePart::DifferenceTo(const Part& otherPart) const {
    const auto& other = dynamic_cast<const ImagePart&>(otherPart);
    if (isThere != other.isThere) return isThere ? "only here is an image" : "here is no image";
    if (std::memcmp(&header, &other.header, sizeof header) != 0) return "the header";
    if (palette != other.palette) return "the colour table";
    if (locks != other.locks) {
        return std::to_string(locks) + " locks instead of " + std::to_string(other.locks);
    }
    const auto [here, there] = std::mismatch(rows.begin(), rows.end(), other.rows.begin());
    if (here == rows.end()) return "";
    const auto offset = static_cast<std::size_t>(here - rows.begin());
    const unsigned xored = static_cast<unsigned>(*here ^ *there);
    std::size_t column = offset % RowBytes() * 8 / header.biBitCount;
    for (unsigned mask = 0x80; header.biBitCount == 1 && (xored & mask) == 0; mask >>= 1) ++column;
    return "row " + std::to_string(offset / RowBytes()) + ", column " + std::to_string(column) + ": byte " +
           std::to_string(*here) + " instead of " + std::to_string(*there);
}

void ImagePart::Write(const std::string& path) const {
    if (!isThere) return;
    if (before != nullptr) before->Write(path + "-before");
    constexpr std::uint32_t kFileHeaderBytes = 14;
    const std::uint32_t offset =
        kFileHeaderBytes + static_cast<std::uint32_t>(sizeof header + palette.size());
    const std::uint32_t fields[] = {offset + static_cast<std::uint32_t>(rows.size()), 0, offset};
    std::ofstream file(path + ".bmp", std::ios::binary);
    file.write("BM", 2).write(reinterpret_cast<const char*>(fields), sizeof fields);
    file.write(reinterpret_cast<const char*>(&header), sizeof header);
    file.write(reinterpret_cast<const char*>(palette.data()), static_cast<std::streamsize>(palette.size()));
    file.write(reinterpret_cast<const char*>(rows.data()), static_cast<std::streamsize>(rows.size()));
}

}  // namespace tavrix::conformance
