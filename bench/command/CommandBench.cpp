// SPDX-License-Identifier: MIT
//
// What the command costs beside reading and writing: processor time a picture, in one program, of
//   alone   reading, decoding to colour and writing as TIFF G4 a plane that is black and white already,
//   export  the same with Binarized in between,
//   whole   what `tavrix binarize` does.
//
//     tavrix_command_bench [FOLDER]     of JPEG pictures; drawn ones, 48 cards and 12 receipts, when not
//     given
#include <malloc.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "commands/Commands.h"
#include "operations/Operations.h"
#include "picture/JpegLibrary.h"
#include "picture/PictureReader.h"

namespace fs = std::filesystem;

namespace host {
namespace {

constexpr int kRounds = 7;
constexpr int kCopies = 60;

using File = std::vector<std::uint8_t>;

[[noreturn]] void Die(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

double Now() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

File ReadAll(const fs::path& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    File bytes(fs::file_size(path));
    if (file == nullptr || std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) Die(path);
    std::fclose(file);
    return bytes;
}

std::vector<fs::path> CopiesOfSample(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (int i = 0; i < kCopies; ++i) {
        paths.push_back(folder / (std::to_string(i) + ".jpg"));
        fs::copy_file(TAVRIX_SAMPLES "/card-colour.jpg", paths.back());
    }
    return paths;
}

// As libjpeg is used when nothing else matters. newRows gives the start of the top row and the step to the
// next one for a width, a height and a number of bits a pixel.
template <typename NewRows>
void Decode(const File& bytes, const NewRows& newRows) {
    jpeg_decompress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, bytes.data(), bytes.size());
    jpeg_read_header(&jpeg, TRUE);
    if (jpeg.num_components == 3) jpeg.out_color_space = JCS_EXT_BGR;
    auto [row, step] = newRows(static_cast<int>(jpeg.image_width), static_cast<int>(jpeg.image_height),
                               8 * jpeg.num_components);
    jpeg_start_decompress(&jpeg);
    for (; jpeg.output_scanline < jpeg.output_height; row += step) jpeg_read_scanlines(&jpeg, &row, 1);
    jpeg_destroy_decompress(&jpeg);
}

using Rows = std::pair<std::uint8_t*, std::ptrdiff_t>;

HostImage DecodeForLibrary(const File& bytes) {
    HostImage image;
    Decode(bytes, [&image](int width, int height, int bits) {
        image = HostImage::Unset(width, height, bits);
        return Rows(image.TopRow(0), -static_cast<std::ptrdiff_t>(image.RowBytes()));
    });
    return image;
}

void DecodeAlone(const File& bytes) {
    std::unique_ptr<std::uint8_t[]> pixels;
    Decode(bytes, [&pixels](int width, int height, int bits) {
        const auto step = static_cast<std::ptrdiff_t>(HostImage::RowBytesOf(bits, width));
        pixels.reset(new std::uint8_t[static_cast<std::size_t>(step * height)]);
        return Rows(pixels.get(), step);
    });
}

// One strip, ones for black, as libtiff packs fastest.
void WriteG4(const fs::path& path, const HostImage& bits) {
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    if (tiff == nullptr) Die(path);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(bits.Width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(bits.Height()));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(bits.Height()));
    const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff));
    File strip(rowBytes * static_cast<std::size_t>(bits.Height()));
    for (int y = 0; y < bits.Height(); ++y) {
        std::transform(bits.TopRow(y), bits.TopRow(y) + rowBytes, strip.data() + rowBytes * y,
                       [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    }
    TIFFWriteEncodedStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
    TIFFClose(tiff);
}

struct Costs {
    std::vector<double> decode, write, alone, exported, whole;  // ms a picture, one value a round
};

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

class Measurement {
  public:
    Measurement(std::vector<fs::path> pictures, fs::path outputs, const Mode& measured)
        : paths(std::move(pictures)), folder(std::move(outputs)), mode(measured) {
        for (const fs::path& path : paths) planes.push_back(Binarize(DecodeForLibrary(ReadAll(path)), mode));
    }

    void Round(Costs& costs) {
        costs.decode.push_back(Time([&](std::size_t i) { DecodeAlone(ReadAll(paths[i])); }));
        costs.write.push_back(Time([&](std::size_t i) { WriteG4(OutputOf(i), planes[i]); }));
        costs.alone.push_back(Time([&](std::size_t i) {
            DecodeAlone(ReadAll(paths[i]));
            WriteG4(OutputOf(i), planes[i]);
        }));
        costs.exported.push_back(Time([&](std::size_t i) {
            WriteG4(OutputOf(i), Binarize(DecodeForLibrary(ReadAll(paths[i])), mode));
        }));
        costs.whole.push_back(TimeCommand());
    }

  private:
    fs::path OutputOf(std::size_t i) const { return folder / (std::to_string(i) + ".tif"); }

    template <typename Task>
    double Time(const Task& task) const {
        const double start = Now();
        for (std::size_t i = 0; i < paths.size(); ++i) task(i);
        return (Now() - start) / static_cast<double>(paths.size());
    }

    double TimeCommand() const {
        std::vector<std::string> words(paths.begin(), paths.end());
        for (const std::string& word : {std::string(mode.name), std::string("-m"), folder.string() + "/",
                                        std::string("-o"), std::string("-q"), std::string("binarize")})
            words.push_back(word);  // CLI11 takes them from the last to the first
        const double start = Now();
        CLI::App app;
        ExitCode code = kDone;
        AddBinarizeCommand(app, code);
        app.parse(words);
        if (code != kDone) Die("binarize failed");
        return (Now() - start) / static_cast<double>(paths.size());
    }

    std::vector<fs::path> paths;
    fs::path folder;
    Mode mode;
    std::vector<HostImage> planes;
};

void Measure(const std::vector<fs::path>& paths, const fs::path& folder, const Mode& mode) {
    Measurement measurement(paths, folder, mode);
    Costs unused, costs;
    measurement.Round(unused);
    for (int round = 0; round < kRounds; ++round) measurement.Round(costs);
    const double alone = Median(costs.alone), exported = Median(costs.exported), whole = Median(costs.whole);
    std::printf(
        "%-8s decode %.2f  write %.2f  alone %.2f  export %.2f  whole %.2f ms  "
        "export/alone %.2f  whole/alone %.2f  whole/export %.2f\n",
        mode.name.data(), Median(costs.decode), Median(costs.write), alone, exported, whole, exported / alone,
        whole / alone, whole / exported);
}

std::vector<fs::path> JpegsIn(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".jpg") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    if (paths.empty()) Die("no .jpg in " + folder.string());
    return paths;
}

}  // namespace
}  // namespace host

int main(int count, char** arguments) {
    using namespace host;
    mallopt(M_TRIM_THRESHOLD, 256 << 20);  // for all three, as the command does
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    std::string name = (fs::temp_directory_path() / "tavrix-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) Die(name);
    const fs::path folder = name;
    const std::vector<fs::path> paths = count > 1 ? JpegsIn(arguments[1]) : CopiesOfSample(folder);
    std::printf("%zu pictures, processor time a picture, median of %d rounds\n", paths.size(), kRounds);
    for (const char* mode : {"otsu", "regions"}) Measure(paths, folder, *FindMode(mode));
    fs::remove_all(folder);
}
