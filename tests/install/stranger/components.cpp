// SPDX-License-Identifier: MIT
// A host in C++ that has the components of a white 32 x 2 image with one black pixel counted.
#include <tavrix/tavrix.h>

#include <cstdint>
#include <cstdio>
#include <tavrix/component_store.hpp>

int main() {
    BITMAPINFOHEADER header = {40, 32, 2, 1, 1, 0, 8, 0, 0, 2, 0};
    RGBQUAD table[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    std::uint8_t bits[8] = {255, 255, 255, 255, 255, 251, 255, 255};
    tavrix::host::Store store;
    if (!Extract_Eight_Connected_Components({&header, table, bits}, store.get(), 1, 0, 0)) return 1;
    std::printf("%u component\n", store.get()->componentCount);
    return store.get()->componentCount == 1 ? 0 : 1;
}
