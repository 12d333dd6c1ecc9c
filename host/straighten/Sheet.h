// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "straighten/EdgeMap.h"

namespace host {

// The card or sheet on its desk or under the lid: the four-sided shape with the best edges, cut off by the
// picture's border or not, outside which there is nothing that may be text. Nothing where that is not
// certain; whyNot then says so in plain words. picture: in colour, top row first.
std::optional<Quad> FindSheet(const cv::Mat3b& picture, std::string& whyNot);

}  // namespace host
