// SPDX-License-Identifier: MIT
#include "commands/PictureCommand.h"

#include <optional>
#include <span>
#include <utility>

#include "picture/PictureReader.h"

namespace host {

ExitCode RunPictureCommand(const FileOptions& files, const PictureOptions& output,
                           const std::function<Picture(Picture, Outcome&)>& transform, Colours colours) {
    if (output.place.empty()) throw UsageError("-o is required");
    const std::string pattern = output.pattern.empty() ? "{stem}." + output.extension : output.pattern;
    CheckPictureName("-o", output.place, pattern, output.extension, output.bits);
    const OutputNames names("-o", output.place, pattern);
    const InputList inputs = InputsOf(files);
    OutputClaims claims(inputs, files.isForced);
    const std::unique_ptr<PageCollection> collection = CollectionOf(output, files, inputs);
    names.Check(std::span(inputs).first(collection ? 1 : inputs.size()), claims);
    const ExitCode code = RunJobs(inputs, files.jobs, [&](const Input& input, Outcome& outcome) {
        PictureSink sink(names, output.extension, input, claims, files.skipsExisting, Effort::kSmall,
                         collection.get());
        if (files.skipsExisting && sink.IsAllDone()) {
            outcome.isSkipped = true;
            return;
        }
        const auto reader = OpenInput(input, files, colours);
        while (std::optional<Picture> page = reader->Next()) {
            outcome.isRead = true;
            sink.Add(transform(std::move(*page), outcome));
        }
        sink.Finish();
    });
    return collection ? collection->Finish(names.NameOf(inputs.front(), 1), claims, code) : code;
}

}  // namespace host
