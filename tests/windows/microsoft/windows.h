/* SPDX-License-Identifier: MIT
 *
 * What the public headers and the sample take of Microsoft's system headers, for a compiler that works as
 * Microsoft's where those are not to be had. */
#pragma once

#define DECLARE __declspec(dllimport)
#define WINAPI __stdcall
#ifdef __cplusplus
extern "C" {
#endif
typedef void* HGLOBAL;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef long LONG;
typedef unsigned short WORD;
typedef unsigned char BYTE;
typedef __SIZE_TYPE__ SIZE_T;
typedef struct tagBITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth, biHeight;
    WORD biPlanes, biBitCount;
    DWORD biCompression, biSizeImage;
    LONG biXPelsPerMeter, biYPelsPerMeter;
    DWORD biClrUsed, biClrImportant;
} BITMAPINFOHEADER;
typedef struct tagRGBQUAD {
    BYTE rgbBlue, rgbGreen, rgbRed, rgbReserved;
} RGBQUAD;
#define GHND 0x42
#define GPTR 0x40
DECLARE HGLOBAL WINAPI GlobalAlloc(UINT, SIZE_T);
DECLARE HGLOBAL WINAPI GlobalFree(HGLOBAL);
DECLARE HGLOBAL WINAPI GlobalHandle(const void*);
DECLARE void* WINAPI GlobalLock(HGLOBAL);
DECLARE int WINAPI GlobalUnlock(HGLOBAL);
DECLARE __declspec(noreturn) void WINAPI ExitProcess(UINT);
#ifdef __cplusplus
}
#endif
#ifndef NOMINMAX
#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#endif
