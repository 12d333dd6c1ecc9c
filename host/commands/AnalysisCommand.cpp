// SPDX-License-Identifier: MIT
#include "commands/AnalysisCommand.h"

#include <optional>
#include <utility>

#include "findings/Overlay.h"
#include "findings/Report.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr char kOverlayStem[] = "{stem}-overlay-{page}.";
constexpr int kOverlayBits = 24;

}  // namespace

void AddAnalysisOptions(CLI::App& command, AnalysisOptions& options) {
    AddFileOptions(command, options.files);
    AddModeOption(command, options.convert);
    AddScaleOption(command, options.convert);
    command
        .add_option("--overlay", options.overlay,
                    "File or folder for a picture with everything drawn over it")
        ->type_name("OUTPUT");
    AddFormatOption(command, "--overlay-format", options.overlayFormat, "Format of overlays in a folder");
}

ExitCode RunAnalysisCommand(const AnalysisOptions& options,
                            const std::function<Findings(const Conversion&)>& find) {
    const PictureOptions& output = options.output;
    const std::string pattern = output.pattern.empty() ? "{stem}." + output.extension : output.pattern;
    const std::string overlayPattern = kOverlayStem + options.overlayFormat;
    CheckPictureName("-o", output.place, pattern, output.extension, output.bits);
    CheckPictureName("--overlay", options.overlay, overlayPattern, options.overlayFormat, kOverlayBits);
    for (const std::string& place : {output.place, options.overlay}) {
        if (place == "-") throw UsageError("pictures cannot go to standard output: the report goes there");
    }
    const OutputNames names("-o", output.place, pattern);
    const OutputNames overlayNames("--overlay", options.overlay, overlayPattern);
    const std::vector<Input> inputs = InputsOf(options.files);
    OutputClaims claims(inputs);
    const std::unique_ptr<PageCollection> collection = CollectionOf(output, options.files, inputs);
    names.Check(collection ? std::vector{inputs.front()} : inputs, claims);
    overlayNames.Check(inputs, claims);
    const ExitCode code = RunJobs(inputs, options.files.jobs, [&](const Input& input, Outcome& outcome) {
        const bool isResuming = options.files.skipsExisting;
        PictureSink bitsSink(names, output.extension, input, claims, isResuming, Effort::kSmall,
                             collection.get());
        PictureSink overlaySink(overlayNames, options.overlayFormat, input, claims, isResuming,
                                Effort::kQuick);
        if (isResuming && (names.IsWanted() || overlayNames.IsWanted()) && bitsSink.IsAllDone() &&
            overlaySink.IsAllDone()) {
            outcome.isSkipped = true;
            return;
        }
        PageFacts facts;
        facts.file = input.path;
        const auto reader = OpenPicture(input.path, options.files.maxPixels);
        for (; std::optional<Picture> page = reader->Next(); ++facts.page) {
            outcome.isRead = true;
            facts.width = page->image.Width();
            facts.height = page->image.Height();
            facts.resolution = page->resolution;
            facts.mode = page->image.BitCount() == 1 ? "" : options.convert.conversion.mode.name;
            HostImage shown = overlayNames.IsWanted() ? page->image.Copy() : HostImage();
            Conversion conversion = Convert(std::move(page->image), options.convert, outcome);
            facts.scale = conversion.scale;
            facts.warnings = conversion.warnings;
            facts.confidence.reset();
            if (conversion.choice && !facts.mode.empty()) facts.confidence = conversion.choice->confidence;
            facts.blackShare = BlackShare(conversion.bits);
            const Findings findings = Reduced(find(conversion), conversion.scale);
            outcome.text += options.wantsJson ? ReportJson(facts, findings) : ReportText(facts, findings);
            if (overlayNames.IsWanted()) overlaySink.Add({DrawOverlay(shown, findings), facts.resolution});
            bitsSink.Add({std::move(conversion.bits),
                          {facts.resolution.x * facts.scale, facts.resolution.y * facts.scale}});
        }
        bitsSink.Finish();
        overlaySink.Finish();
    });
    return collection ? collection->Finish(names.NameOf(inputs.front(), 1), claims, code) : code;
}

}  // namespace host
