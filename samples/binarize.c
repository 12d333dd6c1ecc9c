/* SPDX-License-Identifier: MIT
 * A host in C: makes an 8-bit image, has it binarized, and prints the result. */
#include <stdio.h>
#include <string.h>
#include <tavrix/tavrix.h>

enum { WIDTH = 32, HEIGHT = 8, ROW = 32, TABLE = 256 * 4 };

int main(void) {
    HGLOBAL block = GlobalAlloc(GHND, 40 + TABLE + ROW * HEIGHT);
    BITMAPINFOHEADER* header = (BITMAPINFOHEADER*)GlobalLock(block);
    uint8_t* table = (uint8_t*)(header + 1);
    BITMAPINFOHEADER gray = {40, WIDTH, HEIGHT, 1, 8, 0, ROW * HEIGHT, 11811, 11811, 256, 0};
    *header = gray;
    for (int i = 0; i < 256; ++i) memset(table + 4 * i, i, 3);
    for (int i = 0; i < ROW * HEIGHT; ++i) table[TABLE + i] = i % ROW / 4 % 2 ? 210 : 40;
    GlobalUnlock(block);

    DibRecord result;
    if (Binarized(block, &result, 6) != 1) return 1; /* 6: isodata */
    for (int y = HEIGHT - 1; y >= 0; --y) { /* row 0 is the bottom row */
        for (int x = 0; x < WIDTH; ++x) putchar(result.bits[y * 4 + x / 8] >> (7 - x % 8) & 1 ? '.' : '#');
        putchar('\n');
    }
    GlobalFree(GlobalHandle(result.header)); /* results belong to the host */
    GlobalFree(block);
    return 0;
}
