// SPDX-License-Identifier: MIT
//
// Turns, free rotation, morphology and the margin on sound images, with any argument.
#include "Block.h"

namespace tavrix::fuzz {
namespace {

constexpr int kMaxSide = 80;

// Mostly an angle that hosts would ask for; else any double there is.
double TakeAngle(Input& input) {
    const int kind = input.Below(4);
    if (kind == 0) return input.Take<double>();
    if (kind == 1) return input.Take<std::int16_t>() / 64.0;
    return input.Take<std::uint16_t>() * (90.0 / 65535);
}

void Turn(Input& input, const Block& image) {
    DibRecord result{};
    const int direction = input.Take<std::int16_t>();
    switch (input.Below(4)) {
        case 0: RotateGrayImage(image.Handle(), 90, &result); break;
        case 1: RotateImageFree(image.Handle(), TakeAngle(input), direction, &result); break;
        case 2: {
            const HGLOBAL second = RotateFree(image.Handle(), TakeAngle(input), direction, &result);
            if (second != nullptr) Require(GlobalFree(second) == nullptr, "a second copy of its own");
            break;
        }
        default: {
            const auto side = [&] {
                return input.Below(8) == 0 ? input.Take<std::int16_t>()
                                           : static_cast<std::int16_t>(input.Below(kMaxSide));
            };
            const BlockRect block{side(), side(), side(), side(), 0};
            RotateImageBlock(image.Record(), block, direction, &result);
        }
    }
    TakeBack(result);
}

void Filter(Input& input, const Block& image) {
    DibRecord result{};
    const int operation = input.Below(6);
    Require(Morphology(image.Handle(), &result, operation) == 1, "a sound image is taken");
    TakeBack(result);
}

void Frame(const Block& image) {
    DibRecord record = image.Record();
    std::int32_t steps = 0;
    CopyImgWithWhiteSurr(&record, &steps);
    if (record.header != image.Record().header) TakeBack(record);
}

}  // namespace
}  // namespace tavrix::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavrix::fuzz;
    Input input(data, size);
    const int kind = input.Below(8);
    Input call = input;
    for (int i = 0; i < 3; ++i) input.Take<std::uint64_t>();  // what the call takes
    const Block image(input, kind == 7 ? 1 : TakeDepth(input), kMaxSide);
    if (kind < 4) {
        Turn(call, image);
    } else if (kind < 7) {
        Filter(call, image);
    } else {
        Frame(image);
    }
    return 0;
}
