// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "batch/Inputs.h"
#include "batch/Jobs.h"
#include "batch/OutputNames.h"
#include "picture/PdfDocument.h"

namespace host {

// One PDF file of the pages of all inputs, in the order of the inputs whichever thread is first.
class PageCollection {
  public:
    explicit PageCollection(const std::vector<Input>& allInputs) : inputs(allInputs) {}

    // The pages of one of the inputs; none where it failed. To be called once for each input.
    void Deliver(const Input& input, std::vector<Picture> pages);
    // Writes the file when there are pages; the exit code of a run that ended with code so far.
    ExitCode Finish(const std::string& path, OutputClaims& claims, ExitCode code);

  private:
    const std::vector<Input>& inputs;
    std::mutex mutex;
    PdfDocument document;
    std::map<std::size_t, std::vector<Picture>> waiting;  // for inputs before them
    std::size_t next = 0;                                 // input whose pages come next
    std::size_t filled = 0;                               // inputs that brought pages
};

}  // namespace host
