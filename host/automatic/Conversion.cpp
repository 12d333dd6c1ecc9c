// SPDX-License-Identifier: MIT
#include "automatic/Conversion.h"

#include <algorithm>
#include <utility>

#include "automatic/LostText.h"
#include "operations/Operations.h"
#include "picture/Scaling.h"

namespace host {
namespace {

// A gray picture of two levels as 1 bit; nothing for any other.
std::optional<HostImage> SplitTwoLevels(const HostImage& gray) {
    const std::uint8_t first = gray.TopRow(0)[0];
    std::uint8_t second = first;
    for (int y = 0; y < gray.Height(); ++y) {
        const std::uint8_t* row = gray.TopRow(y);
        for (int x = 0; x < gray.Width(); ++x) {
            if (row[x] == first || row[x] == second) continue;
            if (second != first) return std::nullopt;
            second = row[x];
        }
    }
    if (second == first) return std::nullopt;
    HostImage bits(gray.Width(), gray.Height(), 1);
    const std::uint8_t lighter = std::max(first, second);
    for (int y = 0; y < gray.Height(); ++y) {
        const std::uint8_t* row = gray.TopRow(y);
        std::uint8_t* to = bits.TopRow(y);
        for (int x = 0; x < gray.Width(); ++x) {
            if (row[x] == lighter) to[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
        }
    }
    return bits;
}

}  // namespace

Conversion ToBlackAndWhite(HostImage image, const ConversionOptions& options) {
    Conversion conversion;
    const bool wasBilevel = image.BitCount() == 1;
    const bool isAutomatic = options.mode.number == kAutomaticMode.number;
    if (!isAutomatic) {
        const bool isChosen = options.scale == kAutomaticScale;
        conversion.scale = !isChosen ? options.scale : wasBilevel ? 1 : ScaleFor(ToGray(image));
        if (conversion.scale > 1) image = Scaled(std::move(image), conversion.scale);
    }
    std::optional<std::vector<Area>> textLetters;
    if (image.BitCount() != 1) image = ToGray(std::move(image));
    const HostImage before = wasBilevel ? HostImage() : image.Copy();  // the library works in its picture
    // Otsu's criterion is the same for every threshold between two levels; the library's tie leaves none.
    const bool isSplit = !wasBilevel && (isAutomatic ? options.scale : conversion.scale) == 1 &&
                         (isAutomatic || options.mode.name == "otsu");
    if (std::optional<HostImage> split = isSplit ? SplitTwoLevels(before) : std::nullopt) {
        conversion.bits = std::move(*split);
        if (isAutomatic) conversion.choice.emplace().wasBilevel = true;
    } else if (isAutomatic) {
        AutomaticResult result = BinarizeAutomatically(std::move(image), options.scale);
        conversion.scale = result.choice.scale;
        conversion.choice = result.choice;
        conversion.bits = std::move(result.bits);
        conversion.letters = std::move(result.letters);
        textLetters = std::move(result.textLetters);
    } else {
        conversion.bits = Binarize(std::move(image), options.mode, options.byBlocks);
    }
    if (!wasBilevel) conversion.warnings = WarningsFor(before, conversion.bits, textLetters);
    return conversion;
}

}  // namespace host
