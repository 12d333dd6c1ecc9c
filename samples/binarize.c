/* SPDX-License-Identifier: MIT
 * A host in C: makes a gray image, has it binarized, prints the result. */
#include <stdio.h>
#include <string.h>
#include <tavrix/tavrix.h>

int main(void) {
    const BITMAPINFOHEADER gray = {40, 32, 8, 1, 8, 0, 32 * 8, 0, 0, 256, 0}; /* 32 x 8 pixels */
    HGLOBAL image = GlobalAlloc(GHND, 40 + 256 * 4 + 32 * 8);
    uint8_t* block = GlobalLock(image);
    memcpy(block, &gray, 40);
    for (int i = 0; i < 256; ++i) memset(block + 40 + 4 * i, i, 3); /* gray ramp */
    for (int i = 0; i < 32 * 8; ++i) block[1064 + i] = i / 4 % 2 ? 210 : 40;
    GlobalUnlock(image);

    DibRecord result;
    if (Binarized(image, &result, 6) != 1) return 1;
    for (int y = 7; y >= 0; --y, puts("")) /* row 0 is the bottom row */
        for (int x = 0; x < 32; ++x) putchar(result.bits[4 * y + x / 8] >> (7 - x % 8) & 1 ? '.' : '#');
    GlobalFree(GlobalHandle(result.header)); /* a result belongs to the host */
    GlobalFree(image);
    return 0;
}
