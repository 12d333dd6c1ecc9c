// SPDX-License-Identifier: MIT
#include "commands/AnalysisCommand.h"

#include <exception>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "batch/OutputFile.h"
#include "findings/Overlay.h"
#include "findings/Report.h"
#include "operations/Operations.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr char kOverlayStem[] = "{stem}-overlay-{page}.";
constexpr char kJsonPattern[] = "{stem}.json";
constexpr int kOverlayBits = 24;

std::string PatternOf(const PictureOptions& output) {
    return output.pattern.empty() ? "{stem}." + output.extension : output.pattern;
}

// A component has a black pixel at least.
bool HasManyBlack(const HostImage& bits, double blackShare) {
    return blackShare * bits.Width() * bits.Height() > TAVRIX_STORE_CAPACITY - 3;
}

// Where the results of one run go.
struct Places {
    explicit Places(const AnalysisOptions& options)
        : bits("-o", options.output.place, PatternOf(options.output)),
          overlay("--overlay", options.overlay, kOverlayStem + options.overlayFormat),
          json("--json-out", options.jsonPlace, kJsonPattern) {
        for (const OutputNames* picture : {&bits, &overlay}) {
            if (!picture->IsStandardOutput()) continue;
            throw UsageError("pictures cannot go to standard output: the report goes there");
        }
        if (json.IsByPage()) throw UsageError("--json-out: all pages share one file: {page} has no place");
        if (json.IsStandardOutput())
            throw UsageError("--json-out names files: --json is for standard output");
    }
    bool IsAnyWanted() const { return bits.IsWanted() || overlay.IsWanted() || json.IsWanted(); }

    OutputNames bits, overlay, json;
};

// The work on one input.
class Analysis {
  public:
    Analysis(const AnalysisOptions& allOptions, const Places& allPlaces, const Input& source,
             OutputClaims& outputClaims, PageCollection* collection)
        : options(allOptions),
          places(allPlaces),
          input(source),
          claims(outputClaims),
          bitsSink(places.bits, options.output.extension, input, claims, options.files.skipsExisting,
                   Effort::kSmall, collection),
          overlaySink(places.overlay, options.overlayFormat, input, claims, options.files.skipsExisting,
                      Effort::kQuick) {
        facts.file = input.path;
    }

    bool IsAllDone() const {
        return options.files.skipsExisting && places.IsAnyWanted() && bitsSink.IsAllDone() &&
               overlaySink.IsAllDone() && IsJsonDone();
    }

    // A failure leaves its record in the reports.
    void Run(const std::function<Findings(const Conversion&)>& find, Outcome& outcome) {
        try {
            ReadPages(find, outcome);
        } catch (const std::exception& error) {
            const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
            const std::string record = ErrorJson(facts, isMemory ? "out of memory" : error.what());
            if (options.wantsJson) outcome.text += record;
            jsonText += record;
            WriteJson();
            throw;
        }
        WriteJson();
    }

  private:
    void ReadPages(const std::function<Findings(const Conversion&)>& find, Outcome& outcome) {
        const bool needsColours = places.overlay.IsWanted() || !WorksOnGray(options.convert.conversion);
        const auto reader =
            OpenInput(input, options.files, needsColours ? Colours::kNeeded : Colours::kNotNeeded);
        for (; std::optional<Picture> page = reader->Next(); ++facts.page) {
            outcome.isRead = true;
            facts.width = page->image.Width();
            facts.height = page->image.Height();
            facts.resolution = page->resolution;
            facts.mode = page->image.BitCount() == 1 ? "" : options.convert.conversion.mode.name;
            HostImage shown = places.overlay.IsWanted() ? page->image.Copy() : HostImage();
            Conversion conversion = Convert(std::move(page->image), options.convert, outcome);
            facts.scale = conversion.scale;
            facts.warnings = conversion.warnings;
            facts.confidence.reset();
            if (conversion.choice && !facts.mode.empty()) facts.confidence = conversion.choice->confidence;
            facts.blackShare = BlackShare(conversion.bits);
            Findings findings = Reduced(find(conversion), conversion.scale);
            findings.isTruncated =
                HasManyBlack(conversion.bits, facts.blackShare) && ExceedsStore(conversion.bits);
            if (findings.isTruncated) {
                facts.warnings.emplace_back(kTruncated);
                outcome.notes.push_back(std::string("warning: ") + kTruncated);
            }
            Report(findings, outcome);
            if (places.overlay.IsWanted())
                overlaySink.Add({DrawOverlay(std::move(shown), findings), facts.resolution});
            bitsSink.Add({std::move(conversion.bits),
                          {facts.resolution.x * facts.scale, facts.resolution.y * facts.scale}});
        }
        bitsSink.Finish();
        overlaySink.Finish();
    }

    void Report(const Findings& findings, Outcome& outcome) {
        const bool isFile = places.json.IsWanted();
        const std::string json = isFile || options.wantsJson ? ReportJson(facts, findings) : "";
        if (options.wantsJson) outcome.text += json;
        if (isFile) jsonText += json;
        if (!isFile && !options.wantsJson) outcome.text += ReportText(facts, findings);
    }

    void WriteJson() {
        if (!places.json.IsWanted() || !input.problem.empty()) return;
        const std::string path = places.json.NameOf(input, 1);
        claims.Claim(path);
        WriteWhole(path, {reinterpret_cast<const std::uint8_t*>(jsonText.data()), jsonText.size()},
                   input.path);
    }

    // A record of a failure is not a result: it is tried again.
    bool IsJsonDone() const {
        if (!places.json.IsWanted()) return true;
        if (!places.json.IsDone(input, 1)) return false;
        std::ifstream file(places.json.NameOf(input, 1), std::ios::binary);
        return !HoldsError(std::string(std::istreambuf_iterator<char>(file), {}));
    }

    static constexpr char kTruncated[] =
        "more than 65,533 components: the findings cover only a part of the page";

    const AnalysisOptions& options;
    const Places& places;
    const Input& input;
    OutputClaims& claims;
    PictureSink bitsSink;
    PictureSink overlaySink;
    PageFacts facts;
    std::string jsonText;
};

}  // namespace

void AddAnalysisOptions(CLI::App& command, AnalysisOptions& options) {
    AddFileOptions(command, options.files);
    AddModeOption(command, options.convert);
    AddScaleOption(command, options.convert);
    options.output.bits = 1;
    AddPictureOptions(command, options.output);
    command.add_flag("--json", options.wantsJson, "Report as JSON, one object a page on a line of its own");
    command
        .add_option("--json-out", options.jsonPlace,
                    "File or folder for the report as JSON, a file a picture")
        ->type_name("OUTPUT");
    command
        .add_option("--overlay", options.overlay,
                    "File or folder for a picture with everything drawn over it")
        ->type_name("OUTPUT");
    AddFormatOption(command, "--overlay-format", options.overlayFormat, "Format of overlays in a folder");
}

ExitCode RunAnalysisCommand(const AnalysisOptions& options,
                            const std::function<Findings(const Conversion&)>& find) {
    const PictureOptions& output = options.output;
    CheckPictureName("-o", output.place, PatternOf(output), output.extension, output.bits);
    CheckPictureName("--overlay", options.overlay, kOverlayStem + options.overlayFormat,
                     options.overlayFormat, kOverlayBits);
    const Places places(options);
    const InputList inputs = InputsOf(options.files);
    OutputClaims claims(inputs, options.files.isForced);
    const std::unique_ptr<PageCollection> collection = CollectionOf(output, options.files, inputs);
    places.bits.Check(std::span(inputs).first(collection ? 1 : inputs.size()), claims);
    places.overlay.Check(inputs, claims);
    places.json.Check(inputs, claims);
    const ExitCode code = RunJobs(inputs, options.files.jobs, [&](const Input& input, Outcome& outcome) {
        Analysis analysis(options, places, input, claims, collection.get());
        outcome.isSkipped = analysis.IsAllDone();
        if (!outcome.isSkipped) analysis.Run(find, outcome);
    });
    return collection ? collection->Finish(places.bits.NameOf(inputs.front(), 1), claims, code) : code;
}

}  // namespace host
