// SPDX-License-Identifier: MIT
#include "operations/Findings.h"

namespace host {
namespace {

void Reduce(Box& box, int scale) {
    box = {box.left / scale, box.top / scale, box.right / scale, box.bottom / scale};
}

void Reduce(FoundLine& line, int scale) {
    const auto factor = static_cast<std::uint32_t>(scale);
    Reduce(line.box, scale);
    line.height = (line.height + factor / 2) / factor;
    for (FoundComponent& component : line.components) {
        Reduce(component.box, scale);
        component.pixels = (component.pixels + factor * factor / 2) / (factor * factor);
    }
}

}  // namespace

Findings Reduced(Findings findings, int scale) {
    if (scale == 1) return findings;
    if (findings.blocks) {
        for (FoundBlock& block : *findings.blocks) {
            Reduce(block.box, scale);
            for (FoundLine& line : block.lines) Reduce(line, scale);
        }
    }
    if (findings.lines) {
        for (FoundLine& line : *findings.lines) Reduce(line, scale);
    }
    if (findings.trueLine && *findings.trueLine) Reduce(**findings.trueLine, scale);
    if (findings.logo && *findings.logo) Reduce(**findings.logo, scale);
    return findings;
}

}  // namespace host
