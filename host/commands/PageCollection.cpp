// SPDX-License-Identifier: MIT
#include "commands/PageCollection.h"

#include <cstdio>
#include <utility>

#include "batch/OutputFile.h"
#include "batch/Printable.h"

namespace host {

void PageCollection::Deliver(const Input& input, std::vector<Picture> pages) {
    const std::lock_guard lock(mutex);
    waiting[static_cast<std::size_t>(&input - inputs.data())] = std::move(pages);
    for (auto following = waiting.extract(next); following; following = waiting.extract(++next)) {
        for (const Picture& page : following.mapped()) document.Add(page);
        filled += !following.mapped().empty();
    }
}

ExitCode PageCollection::Finish(const std::string& path, OutputClaims& claims, ExitCode code) {
    if (filled == 0) return code;
    try {
        claims.Claim(path);
        WriteWhole(path, document.Finish());
    } catch (const PictureError& error) {
        std::fprintf(stderr, "tavrix: %s\n", Printable(error.what()).c_str());
        return kOutputUnwritable;
    }
    if (filled < inputs.size()) {
        std::fprintf(stderr, "tavrix: %s: %zu of %zu inputs are missing in it\n", Printable(path).c_str(),
                     inputs.size() - filled, inputs.size());
    }
    return code;
}

}  // namespace host
