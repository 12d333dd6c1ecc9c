// SPDX-License-Identifier: MIT
#include "api/ExportFrame.h"

using namespace tavrix;

extern "C" LogoRect TAVRIX_CALL FindCardLogo(DibRecord record, ComponentStore store) {
    constexpr LogoRect kNone{};
    return Guarded(kNone, [&] {
        const ImagePtr image = api::Wrap(record, api::k1Bit);
        if (!image) return kNone;
        ImageTool tool(image.get());
        LogoRect logo{};
        tool.FindLogo(&logo, &store);
        return logo;
    });
}
