// SPDX-License-Identifier: MIT
//
// Runs a fuzzing target once over every file of the folders and files given, with any compiler.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int runs = 0;

void Replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);  // names the input that ends the program
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++runs;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) Replay(entry.path());
        } else {
            Replay(argv[i]);
        }
    }
    std::printf("%d inputs\n", runs);
    return runs > 0 ? 0 : 1;
}
