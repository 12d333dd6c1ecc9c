// SPDX-License-Identifier: MIT
//
// What the script of web/src calls. Sizes and codes are checked there. A function that can fail gives a word
// of Status; the reason stands in LastError.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "Picture.h"
#include "automatic/Conversion.h"
#include "automatic/FindCard.h"
#include "operations/Operations.h"

#define TAVRIX_SCRIPT extern "C" __attribute__((used, visibility("default")))

using namespace host;
using web::Layout;
using web::Work;

namespace {

enum Status : std::int32_t { kDone = 0, kNoMemory = 1, kRefused = 2 };

// What the operations on components find at most; beyond that the library's store is full.
constexpr std::size_t kMostComponents = 65533;

std::string& LastError() {
    static std::string text;
    return text;
}

template <class Body>
Status Run(Body&& body) {
    try {
        body();
        return kDone;
    } catch (const std::bad_alloc&) {
        return kNoMemory;
    } catch (const std::exception& error) {
        LastError() = error.what();
        return kRefused;
    }
}

const Mode& ModeOf(std::int32_t number) {
    const auto found = std::find_if(kModes.begin(), kModes.end(),
                                    [number](const Mode& mode) { return mode.number == number; });
    return found != kModes.end() ? *found : kAutomaticMode;
}

// The picture of the work in black and white; its place is empty then.
Conversion Convert(Work& work, std::int32_t mode, bool byBlocks) {
    const ConversionOptions options = {ModeOf(mode), byBlocks};
    const bool wasBilevel = work.picture.BitCount() == 1;
    Conversion conversion = ToBlackAndWhite(std::move(work.picture), options);
    if (conversion.choice && !wasBilevel) work.confidence = conversion.choice->confidence;
    work.warnings = conversion.warnings;
    return conversion;
}

void Add(Work& work, const Box& box) {
    work.numbers.insert(work.numbers.end(), {box.left, box.top, box.right, box.bottom});
}

void Add(Work& work, const std::optional<Box>& box) {
    work.numbers.push_back(box.has_value());
    if (box) Add(work, *box);
}

void Add(Work& work, const std::vector<FoundComponent>& components) {
    work.numbers.push_back(static_cast<std::int32_t>(components.size()));
    for (const FoundComponent& component : components) {
        Add(work, component.box);
        work.numbers.push_back(static_cast<std::int32_t>(component.pixels));
    }
}

void AddComponents(Work& work, const HostImage& bits) {
    std::vector<FoundComponent> components;
    for (const FoundBlock& block : FindComponents(bits, {})) {
        for (const FoundLine& line : block.lines) {
            components.insert(components.end(), line.components.begin(), line.components.end());
        }
    }
    Add(work, components);
    if (components.size() >= kMostComponents) {
        work.warnings.emplace_back("more than 65,533 components: the findings cover only a part of the page");
    }
}

}  // namespace

// Memory for pixels on their way in and out.
TAVRIX_SCRIPT std::uint8_t* Allocate(std::uint32_t bytes) {
    return new (std::nothrow) std::uint8_t[bytes];
}
TAVRIX_SCRIPT void Free(const std::uint8_t* memory) {
    delete[] memory;
}

// A black picture to work on, or null.
TAVRIX_SCRIPT Work* Begin(std::int32_t width, std::int32_t height, std::int32_t bitCount) {
    Work* work = nullptr;
    Run([&] { work = new Work{HostImage(width, height, bitCount), {}, {}}; });
    return work;
}
TAVRIX_SCRIPT void End(const Work* work) {
    delete work;
}
TAVRIX_SCRIPT Status Put(Work* work, std::int32_t first, std::int32_t count, Layout layout,
                         const std::uint8_t* pixels) {
    return Run([&] { web::PutRows(work->picture, first, count, layout, pixels); });
}
TAVRIX_SCRIPT void Get(const Work* work, std::int32_t first, std::int32_t count, std::uint8_t* pixels) {
    web::GetRows(work->picture, first, count, pixels);
}

TAVRIX_SCRIPT std::int32_t Width(const Work* work) {
    return work->picture.Width();
}
TAVRIX_SCRIPT std::int32_t Height(const Work* work) {
    return work->picture.Height();
}
TAVRIX_SCRIPT std::int32_t Depth(const Work* work) {
    return work->picture.BitCount();
}
TAVRIX_SCRIPT double Confidence(const Work* work) {
    return work->confidence;
}
TAVRIX_SCRIPT const std::int32_t* Numbers(const Work* work) {
    return work->numbers.data();
}
TAVRIX_SCRIPT std::uint32_t NumberCount(const Work* work) {
    return work->numbers.size();
}
// Null after the last one.
TAVRIX_SCRIPT const char* Warning(const Work* work, std::uint32_t index) {
    return index < work->warnings.size() ? work->warnings[index].c_str() : nullptr;
}
TAVRIX_SCRIPT const char* Reason() {
    return LastError().c_str();
}
// What pictures a mode is for.
TAVRIX_SCRIPT const char* Suits(std::int32_t mode) {
    return ModeOf(mode).suits.data();
}

// mode: as Binarized takes it, -1 for the automatic one.
TAVRIX_SCRIPT Status ToBits(Work* work, std::int32_t mode, std::int32_t byBlocks) {
    return Run([&] { work->picture = Convert(*work, mode, byBlocks != 0).bits; });
}

// Numbers: components, each a box and its pixels; with a count before them.
TAVRIX_SCRIPT Status Components(Work* work, std::int32_t mode) {
    return Run([&] {
        work->picture = Convert(*work, mode, false).bits;
        AddComponents(*work, work->picture);
    });
}

// Numbers: components as above; lines, each a box, its height and components; the true line and the logo,
// each 0, or 1 and a box.
TAVRIX_SCRIPT Status Card(Work* work, std::int32_t mode) {
    return Run([&] {
        Conversion page = Convert(*work, mode, false);
        AddComponents(*work, page.bits);
        const std::vector<FoundLine> lines = FindLines(TextOf(page), {TAVRIX_SELECT_ALL_LINES, 0, 0}, 0);
        work->numbers.push_back(static_cast<std::int32_t>(lines.size()));
        for (const FoundLine& line : lines) {
            Add(*work, line.box);
            work->numbers.push_back(static_cast<std::int32_t>(line.height));
            Add(*work, line.components);
        }
        Add(*work, FindTrueLine(TextOf(page), {}));
        Add(*work, FindLogoOf(page));
        work->picture = std::move(page.bits);
    });
}

TAVRIX_SCRIPT Status Turn(Work* work, double degrees) {
    return Run([&] { work->picture = Rotate(std::move(work->picture), degrees); });
}

// One of RotateImageBlock's codes, on a box of a 1-bit picture.
TAVRIX_SCRIPT Status TurnBox(Work* work, std::int32_t left, std::int32_t top, std::int32_t right,
                             std::int32_t bottom, std::int32_t code) {
    return Run([&] { work->picture = TurnBlock(work->picture, {left, top, right, bottom}, code); });
}

// One of Morphology's operations on a picture of a suitable depth.
TAVRIX_SCRIPT Status Morph(Work* work, std::int32_t operation) {
    return Run([&] { work->picture = RunMorphology(std::move(work->picture), operation); });
}

TAVRIX_SCRIPT Status AddMargin(Work* work) {
    return Run([&] { work->picture = Pad(std::move(work->picture)); });
}
