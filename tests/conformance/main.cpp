// SPDX-License-Identifier: MIT
//
// A host that loads the library at run time, drives every exported function on drawn pictures and compares
// what each call gives with the list of expected results.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Cases.h"

#if defined(__SSE2__) && !defined(__wasm__)
#include <emmintrin.h>
#endif

namespace tavrix::conformance {
namespace {

constexpr char kUsage[] =
    "tavrix_conformance LIBRARY EXPECTED          compares the library with the list of expected results\n"
    "tavrix_conformance LIBRARY --write EXPECTED  makes the list anew\n"
    "tavrix_conformance LIBRARY --against OTHER   compares two builds: the exact place of each difference\n"
    "tavrix_conformance LIBRARY --dump CASE       writes input and result of a case into the current "
    "folder\n";
constexpr char kBetween[] = " = ";  // in a line, between the case and what it gave
constexpr int kMostShown = 20;      // differences

Cases AllCases() {
    Cases cases;
    AddBinarizeCases(cases);
    AddComponentCases(cases);
    AddLineCases(cases);
    AddStoreCases(cases);
    AddGeometryCases(cases);
    AddMorphologyCases(cases);
    return cases;
}

#if defined(__SSE2__) && !defined(__wasm__)
// What a host may have set: rounding up, denormal numbers as zeros; on the old unit single precision as well.
class HostsFloatingPoint {
  public:
    HostsFloatingPoint() : control(_mm_getcsr()) {
        _mm_setcsr(kOddControl);
        asm volatile("fnstcw %0" : "=m"(oldControl));
        asm volatile("fldcw %0" ::"m"(kOldOddControl));
    }
    ~HostsFloatingPoint() {
        std::uint16_t left;
        asm volatile("fnstcw %0" : "=m"(left));
        const bool isKept = _mm_getcsr() == kOddControl && left == kOldOddControl;
        asm volatile("fldcw %0" ::"m"(oldControl));
        _mm_setcsr(control);
        Require(isKept, "the host's floating-point state as it was");
    }
    HostsFloatingPoint(const HostsFloatingPoint&) = delete;
    HostsFloatingPoint& operator=(const HostsFloatingPoint&) = delete;

  private:
    static constexpr std::uint32_t kOddControl = 0x1F80 | 0x4000 | 0x8000 | 0x0040;
    static constexpr std::uint16_t kOldOddControl = 0x087F;
    std::uint32_t control;
    std::uint16_t oldControl;
};
#else
struct HostsFloatingPoint {};
#endif

// Every second case runs as in a host with a floating-point state of its own, which must not matter.
void RunCase(const Cases& cases, const Case& one, Library& library, Outcome& outcome) {
    std::optional<HostsFloatingPoint> state;
    if ((&one - cases.data()) % 2 != 0) state.emplace();
    one.run(library, outcome);
}

// A name twice would leave one of its cases without an expected result.
void RequireUniqueNames(const Cases& cases) {
    std::map<std::string, int> counts;
    for (const Case& one : cases) Require(++counts[one.name] == 1, "one case of the name " + one.name);
}

void Show(const std::string& name, const std::string& difference) {
    static int shown = 0;
    if (++shown > kMostShown) {
        Require(false, name);
    } else {
        Require(false, name + "\n    " + difference);
    }
}

void Compare(Library& library, const Cases& cases, const char* path) {
    std::ifstream file(path);
    std::map<std::string, std::string> expected;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::size_t at = line.find(kBetween);
        if (at != std::string::npos) expected[line.substr(0, at)] = line.substr(at + std::strlen(kBetween));
    }
    Require(!expected.empty(), std::string("to read ") + path);
    for (const Case& one : cases) {
        Outcome outcome;
        RunCase(cases, one, library, outcome);
        const auto line = expected.find(one.name);
        if (line == expected.end()) {
            Show(one.name, "is not in the list");
            continue;
        }
        const std::string text = outcome.Text();
        if (text != line->second) Show(one.name, DifferenceOfTexts(line->second, text));
        expected.erase(line);
    }
    for (const auto& [name, text] : expected) Show(name, "is in the list, but no case");
}

void Write(Library& library, const Cases& cases, const char* path) {
    std::ofstream file(path);
    for (const Case& one : cases) {
        Outcome outcome;
        one.run(library, outcome);
        file << one.name << kBetween << outcome.Text() << "\n";
    }
    Require(file.good(), std::string("to write ") + path);
}

void CompareBuilds(Library& library, const Cases& cases, const char* path) {
    Library other(path);
    if (!other.IsLoaded()) return;
    for (const Case& one : cases) {
        Outcome here;
        Outcome there;
        library.ChooseMemory();
        one.run(library, here);
        other.ChooseMemory();
        one.run(other, there);
        const std::string difference = here.DifferenceTo(there);
        if (!difference.empty()) Show(one.name, difference);
    }
}

void Dump(Library& library, const Cases& cases, const char* name) {
    const auto found =
        std::find_if(cases.begin(), cases.end(), [&](const Case& one) { return one.name == name; });
    Require(found != cases.end(), std::string("to find the case ") + name);
    if (found == cases.end()) return;
    Outcome outcome;
    found->run(library, outcome);
    std::printf("%s%s%s\n", name, kBetween, outcome.Text().c_str());
    outcome.Write(".");
}

int Run(const std::vector<const char*>& arguments) {
    const std::string option = arguments.size() == 3 ? arguments[1] : "";
    if (arguments.size() != 2 && option != "--write" && option != "--against" && option != "--dump") {
        std::fputs(kUsage, stderr);
        return 2;
    }
    {
        Library library(arguments[0]);
        if (!library.IsLoaded()) return 1;
        library.ChooseMemory();
        const Cases cases = AllCases();
        RequireUniqueNames(cases);
        if (option == "--dump") {
            Dump(library, cases, arguments[2]);
            return Failures() == 0 ? 0 : 1;
        }
        if (option.empty()) Compare(library, cases, arguments[1]);
        if (option == "--write") Write(library, cases, arguments[2]);
        if (option == "--against") CompareBuilds(library, cases, arguments[2]);
        library.RequireEveryExportCalled();
        std::printf("%d cases\n", static_cast<int>(cases.size()));
    }
    return Failures() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace tavrix::conformance

int main(int argc, char** argv) {
    return tavrix::conformance::Run({argv + 1, argv + argc});
}
