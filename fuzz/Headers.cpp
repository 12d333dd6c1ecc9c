// SPDX-License-Identifier: MIT
//
// Any packed block, lies in its header included, to every export that takes one. A refusal writes nothing;
// a result is in order.
#include "Block.h"
#include "tavrix/message_handler.h"

namespace tavrix::fuzz {
namespace {

constexpr int kMaxSide = 48;

// Puts a number somewhere into the header, now and then.
void Lie(Input& input, BITMAPINFOHEADER& header) {
    auto* fields = reinterpret_cast<std::uint8_t*>(&header);
    for (int lies = input.Below(4); lies > 1; --lies) {
        const std::size_t at = 2 * static_cast<std::size_t>(input.Below(19));
        const auto number = input.Take<std::uint32_t>();
        std::memcpy(fields + at, &number, input.Below(2) == 0 ? 4 : 2);
    }
}

// Through three pointers nobody can see how large the block is: there the header must not claim more.
bool IsCovered(const Block& image) {
    const BITMAPINFOHEADER& header = *image.Record().header;
    const std::uint64_t table = 4 * std::uint64_t{header.biBitCount <= 8 ? 1u << header.biBitCount : 0};
    return GlobalSize(image.Handle()) >= sizeof header + table + header.biSizeImage;
}

// Returns whether the export took the image. Each writes result only then.
bool CallByHandle(Input& input, HGLOBAL handle, DibRecord& result) {
    const int mode = input.Byte() - 8;
    switch (input.Below(7)) {
        case 0: return Binarized(handle, &result, mode) == 1;
        case 1: return Binarized_Separate_Block(handle, &result, mode) == 1;
        case 2: return RotateGrayImage(handle, mode % 4 == 0 ? mode : 90, &result) == 1;
        case 3: return RotateImageFree(handle, mode, mode & 1, &result) == 1;
        case 4: {
            const HGLOBAL second = RotateFree(handle, mode, mode & 1, &result);
            return second != nullptr && GlobalFree(second) == nullptr;
        }
        case 5: return Morphology(handle, &result, mode) == 1;
        default: return RemoveImageBorder(handle, &result) == 1;
    }
}

bool CallByRecord(Input& input, DibRecord& record, DibRecord& result) {
    const int mode = input.Byte() - 8;
    const GroupingOptions options{input.Take<std::uint16_t>(), 0, input.Take<std::uint16_t>()};
    switch (input.Below(5)) {
        case 0: return FindTrueLineRect(&record, &options).right != 0;
        case 1: {
            const auto side = [&] { return static_cast<std::int16_t>(input.Take<std::int8_t>()); };
            const BlockRect block{side(), side(), side(), side(), 0};
            return RotateImageBlock(record, block, mode, &result) == 1;
        }
        case 2: {
            ComponentStore empty{};
            return FindCardLogo(record, empty).right != 0;
        }
        case 3: {
            DibRecord given = record;
            if (Morphology(nullptr, &given, mode) != 1) return false;
            result = given;
            return true;
        }
        default: {
            DibRecord given = record;
            std::int32_t steps = 0;
            CopyImgWithWhiteSurr(&given, &steps);
            if (given.header == record.header) return false;
            TakeBack(given);
            return true;
        }
    }
}

}  // namespace
}  // namespace tavrix::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavrix::fuzz;
    TavrixSetMessageHandler([](const char*, void*) {}, nullptr);
    Input input(data, size);
    const bool byHandle = input.Below(3) != 0;
    Input call = input;
    input.Take<std::uint64_t>();  // what the call takes
    input.Take<std::uint64_t>();
    const Block image(input, TakeDepth(input), kMaxSide);
    Lie(input, *image.Record().header);
    if (!byHandle && !IsCovered(image)) return 0;
    const std::vector<std::uint8_t> before = image.Bytes();
    DibRecord record = image.Record(), result{};
    const bool isTaken =
        byHandle ? CallByHandle(call, image.Handle(), result) : CallByRecord(call, record, result);
    if (GlobalFlags(image.Handle()) == GMEM_INVALID_HANDLE) return 0;  // replaced, as it may be
    Require(GlobalFlags(image.Handle()) == 1, "the host's own lock is all that is left");
    if (!isTaken) {
        Require(image.Bytes() == before, "a refused image stays as it was");
        Require(result.header == nullptr, "a refusal writes no result");
    }
    TakeBack(result);
    return 0;
}
