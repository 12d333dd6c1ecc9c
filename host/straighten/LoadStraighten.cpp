// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <string>
#include <utility>

#include "straighten/Straighten.h"

namespace host {
namespace {

StraightenFunction* Load() {
    void* const module = dlopen(TAVRIX_STRAIGHTEN_MODULE, RTLD_LAZY | RTLD_LOCAL);
    void* const found = module != nullptr ? dlsym(module, kStraightenFunction) : nullptr;
    if (found == nullptr) {
        throw PictureError(PictureError::kFailed,
                           std::string("straightening and cropping cannot be loaded (") + dlerror() +
                               "): install tavrix again, or do without them");
    }
    return reinterpret_cast<StraightenFunction*>(found);
}

}  // namespace

Picture Straighten(Picture page, const StraightenOptions& options, std::string& remark) {
    static StraightenFunction* const straighten = Load();
    straighten(page, options, remark);
    return page;
}

}  // namespace host
