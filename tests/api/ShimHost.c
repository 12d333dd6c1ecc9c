/* SPDX-License-Identifier: MIT
 *
 * A host with Windows types of its own and a global memory of its own under the same names, as a program
 * ported from Windows may have. The library loaded into it must go on using its own.
 */
#include <dlfcn.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

typedef void* HGLOBAL;
typedef struct BITMAPINFOHEADER {
    uint32_t biSize;
    int32_t biWidth, biHeight;
    uint16_t biPlanes, biBitCount;
    uint32_t biCompression, biSizeImage;
    int32_t biXPelsPerMeter, biYPelsPerMeter;
    uint32_t biClrUsed, biClrImportant;
} BITMAPINFOHEADER;
typedef struct RGBQUAD {
    uint8_t rgbBlue, rgbGreen, rgbRed, rgbReserved;
} RGBQUAD;
#define TAVRIX_HOST_TYPES
#include <tavrix/tavrix.h>

static int shimCalls = 0;
#define SHIM(name)                                            \
    __attribute__((visibility("default"))) void* name(void) { \
        ++shimCalls;                                          \
        return NULL;                                          \
    }
SHIM(GlobalAlloc)
SHIM(GlobalLock)
SHIM(GlobalUnlock)
SHIM(GlobalFree)
SHIM(GlobalHandle)
SHIM(GlobalSize)

int main(int count, char** arguments) {
    enum { kSide = 16, kTable = 256 * 4, kPixels = kSide * kSide };
    void* library = count > 1 ? dlopen(arguments[1], RTLD_NOW | RTLD_GLOBAL) : NULL;
    if (library == NULL) return 1;
    HGLOBAL (*alloc)(unsigned, size_t) = (HGLOBAL(*)(unsigned, size_t))dlsym(library, "GlobalAlloc");
    void* (*lock)(HGLOBAL) = (void* (*)(HGLOBAL))dlsym(library, "GlobalLock");
    int32_t (*binarized)(HGLOBAL, DibRecord*, int32_t) =
        (int32_t(*)(HGLOBAL, DibRecord*, int32_t))dlsym(library, "Binarized");
    const BITMAPINFOHEADER header = {40, kSide, kSide, 1, 8, 0, kPixels, 0, 0, 256, 0};
    HGLOBAL image = alloc(0x42, sizeof header + kTable + kPixels);
    BITMAPINFOHEADER* block = lock(image);
    if (block == NULL) return 2;
    *block = header;
    DibRecord result;
    if (binarized(image, &result, 1) != 1 || result.header->biBitCount != 1) return 3;
    printf("%d calls of the host's own functions\n", shimCalls);
    return shimCalls == 0 ? 0 : 4;
}
