// SPDX-License-Identifier: MIT
#include "Operations.h"

#include <string>
#include <utility>

#include "Picture.h"

namespace tavrix::host {
namespace {

void Check(bool isDone, const std::string& operation) {
    if (!isDone) throw PictureError(PictureError::kFailed, operation + " refused the picture");
}

}  // namespace

HostImage Binarize(HostImage image, const Mode& mode, bool byBlocks) {
    if (image.BitCount() == 1) return image;
    DibRecord result = {};
    if (byBlocks) {
        image = ToGray(std::move(image));
        Check(Binarized_Separate_Block(image.Handle(), &result, mode.number) == 1,
              "Binarized_Separate_Block");
    } else {
        Check(Binarized(image.Handle(), &result, mode.number) == 1, "Binarized");
    }
    return HostImage(result);
}

}  // namespace tavrix::host
