// SPDX-License-Identifier: MIT
#include "commands/CommandNames.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "batch/OutputNames.h"

namespace host {
namespace {

// Letters to insert, delete or change to turn one word into the other (Levenshtein 1966).
std::size_t Distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t corner = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = corner + (from[i] != to[j]);
            corner = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, corner + 1});
        }
    }
    return row.back();
}

}  // namespace

void CheckCommandName(const CLI::App& app, int argc, const char* const* argv) {
    if (argc < 2 || argv[1][0] == '-') return;
    constexpr std::size_t kMostTypos = 3;
    const std::string word = argv[1];
    std::string nearest;
    std::size_t least = std::min(kMostTypos, word.size() / 2) + 1;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string& name = command->get_name();
        if (word == name) return;
        const std::size_t distance = !word.empty() && name.starts_with(word) ? 0 : Distance(word, name);
        if (distance >= least) continue;
        least = distance;
        nearest = name;
    }
    throw UsageError("there is no command " + word +
                     (nearest.empty() ? " (tavrix --help lists them)" : ": did you mean " + nearest + "?"));
}

}  // namespace host
