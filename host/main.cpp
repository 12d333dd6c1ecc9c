// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "batch/OutputNames.h"
#include "batch/Printable.h"
#include "batch/TemporaryNames.h"
#include "commands/CommandNames.h"
#include "commands/Commands.h"
#include "picture/PictureReader.h"

using namespace host;

namespace {

constexpr char kExitCodes[] =
    "Exit codes: 0 all done; 2 usage; 4 an output could not be written; else 3 no input could be read;\n"
    "else 1 a picture failed.";

// Keeps the memory of one picture for the next: giving it back to the system and having it cleared again
// costs more than the work on a picture.
void KeepMemory() {
    constexpr int kTrimBytes = 256 << 20, kMmapBytes = 32 << 20;
    mallopt(M_TRIM_THRESHOLD, kTrimBytes);
    mallopt(M_MMAP_THRESHOLD, kMmapBytes);
}

// Files that are opened later must not get the numbers of the standard streams: messages would end up in
// them. Using one that was closed still fails.
void OccupyStandardStreams() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (fcntl(number, F_GETFD) == -1) open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

// The command of that name alone, since making all of them takes longer than a small picture; all where there
// is none of it.
void AddCommands(CLI::App& app, std::string_view name, ExitCode& code) {
    struct {
        std::string_view name;
        void (*add)(CLI::App&, ExitCode&);
    } constexpr kCommands[] = {
        {"scan", AddScanCommand},
        {"binarize", AddBinarizeCommand},
        {"compare", AddCompareCommand},
        {"card", AddCardCommand},
        {"components", AddComponentsCommand},
        {"lines", AddLinesCommand},
        {"trueline", AddTrueLineCommand},
        {"logo", AddLogoCommand},
        {"rotate", AddRotateCommand},
        {"turn", AddTurnCommand},
        {"pad", AddPadCommand},
        {"morph", AddMorphCommand},
    };
    for (const auto& command : kCommands) {
        if (command.name == name) return command.add(app, code);
    }
    for (const auto& command : kCommands) command.add(app, code);
    AddModesCommand(app);
}

ExitCode Fail(const char* reason, ExitCode code) {
    std::fprintf(stderr, "tavrix: %s\n", Printable(reason).c_str());
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    OccupyStandardStreams();
    KeepMemory();
    RemoveTemporariesOnSignals();
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an output that cannot be written
    CLI::App app("Cleans scans of business cards and other small documents, and finds what is on them.",
                 "tavrix");
    app.set_version_flag("--version", std::string("tavrix " TAVRIX_VERSION "\nreads ") + kReadFormats);
    app.require_subcommand(1);
    app.footer(kExitCodes);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "tavrix: " + Printable(error.what()) + "\n" +
               "tavrix --help and tavrix COMMAND --help say more\n";
    });
    ExitCode code = kDone;
    AddCommands(app, argc > 1 ? argv[1] : "", code);
    try {
        CheckCommandName(app, argc, argv);
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        code = app.exit(error) == 0 ? kDone : kUsage;
    } catch (const UsageError& error) {
        code = Fail(error.what(), kUsage);
    } catch (const PictureError& error) {
        code = Fail(error.what(), kNothingReadable);
    } catch (const std::exception& error) {
        code = Fail(error.what(), kSomeFailed);
    }
    if (std::fflush(stdout) != 0 && code == kDone)
        code = Fail("cannot write standard output", kOutputUnwritable);
    return code;
}
