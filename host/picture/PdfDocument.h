// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "picture/Picture.h"

struct _HPDF_Doc_Rec;  // what a HPDF_Doc points to

namespace host {

// A PDF file in the making, one page a picture: 1 bit as CCITT Group 4, gray and colour as JPEG. Pages have
// the size of their pictures on paper. Only the packed pictures are kept. Throws PictureError.
class PdfDocument {
  public:
    PdfDocument();
    void Add(const Picture& page);
    std::vector<std::uint8_t> Finish();

  private:
    struct Closer {
        void operator()(_HPDF_Doc_Rec* handle) const;
    };
    std::unique_ptr<_HPDF_Doc_Rec, Closer> document;
};

}  // namespace host
