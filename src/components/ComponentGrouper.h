// SPDX-License-Identifier: MIT
#pragma once

#include "components/ImageFrame.h"
#include "tavrix/tavrix.h"

namespace tavrix {

// Base of the classes that regroup the components of a store.
class ComponentGrouper : public ImageFrame {
  public:
    using ImageFrame::ImageFrame;
    virtual bool Run(ComponentStore& store) = 0;
    virtual ~ComponentGrouper() = default;
    ComponentGrouper(const ComponentGrouper&) = delete;
    ComponentGrouper& operator=(const ComponentGrouper&) = delete;
};

}  // namespace tavrix
