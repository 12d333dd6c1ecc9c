/* SPDX-License-Identifier: MIT
 *
 * Tavrix: binarization, components, text lines, logo, rotation and morphology for scans of
 * business cards and similar small documents. Usable from C99 and from C++.
 *
 * Images are packed device-independent bitmaps: a BITMAPINFOHEADER, a colour table and pixel rows in
 * one block without gaps, with 1, 8 or 24 bits a pixel.
 *   - Row length in bytes: ((bits * width + 31) / 8) rounded down to a multiple of 4.
 *   - 1 bit: pixel x is bit 7 - x % 8 of byte x / 8; 0 is black, 1 is white. 8 bits: 0 black .. 255
 *     white. 24 bits: blue, green, red.
 *   - Row 0 is the first row in memory, which is the bottom row of the picture as people see it.
 *     Coordinates are columns from the left and such stored rows; "clockwise" is as displayed.
 * An image that comes in must have biSize 40, biCompression 0, sides of 0 to 32,767 pixels, biClrUsed
 * 2, 256 or 0 (for 1, 8, 24 bits) and biSizeImage = row length * height; a block of global memory must
 * be at least as large as its header says. Any other image is refused: the function returns its
 * refusal value and writes nothing.
 *
 * Ownership: the host owns what it hands in. A result is one new movable block of global memory whose
 * header, colour table and rows the DibRecord points to; the host owns it and frees it with
 * GlobalFree(GlobalHandle(record.header)). It arrives locked once unless a function says otherwise.
 * Outside Windows <tavrix/global_memory.h> declares the global-memory functions.
 *
 * Threads: calls that share neither an image block nor a component store may run at the same time. No
 * exception leaves a function.
 *
 * When memory runs out a function returns its refusal value and leaves its record alone; pixels and nodes
 * that it worked on in place stay as they are then. Where only working memory is missing these go on:
 *   - Extract_Eight_Connected_Components returns 1; the store holds what was found until then, or nothing.
 *   - Binarized and Binarized_Separate_Block return 1 with the image as far as the method came, nonzero white.
 *   - Morphology's operation 2 returns 1 with the image as it was.
 *   - Grouping leaves a component whole that it would have split.
 */
#ifndef TAVRIX_TAVRIX_H
#define TAVRIX_TAVRIX_H

#include <stdint.h>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#define TAVRIX_CALL __stdcall
#ifdef TAVRIX_BUILDING
#define TAVRIX_API
#else
#define TAVRIX_API __declspec(dllimport)
#endif
#else
#define TAVRIX_CALL
#define TAVRIX_API __attribute__((visibility("default")))

/* Outside Windows these are declared here, unless the program has them from elsewhere: then it defines
 * TAVRIX_HOST_TYPES and brings HGLOBAL (a pointer), BITMAPINFOHEADER and RGBQUAD of the same layout. */
#ifndef TAVRIX_HOST_TYPES
#include <tavrix/global_memory.h>

typedef struct BITMAPINFOHEADER {
    uint32_t biSize;        /* always 40 */
    int32_t biWidth;        /* pixels */
    int32_t biHeight;       /* rows, never negative */
    uint16_t biPlanes;      /* 1 */
    uint16_t biBitCount;    /* 1, 8 or 24 */
    uint32_t biCompression; /* 0 */
    uint32_t biSizeImage;   /* bytes of pixel rows */
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed; /* entries of the colour table */
    uint32_t biClrImportant;
} BITMAPINFOHEADER;

typedef struct RGBQUAD {
    uint8_t rgbBlue;
    uint8_t rgbGreen;
    uint8_t rgbRed;
    uint8_t rgbReserved;
} RGBQUAD;
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Three pointers into one packed DIB. */
typedef struct DibRecord {
    BITMAPINFOHEADER* header;
    RGBQUAD* palette; /* header + 40 bytes */
    uint8_t* bits;    /* first byte of row 0 */
} DibRecord;

enum { NODE_COMPONENT = 1, NODE_LINE = 4, NODE_BLOCK = 8 };

/* A block, a line or a component. The four sides are inclusive, in columns and stored rows, so that
 * top >= bottom. 124 bytes in 32-bit programs; the same fields in the same order elsewhere. */
typedef struct ComponentNode {
    uint16_t reserved0;
    uint16_t reserved2;
    int16_t left;
    int16_t top; /* largest row */
    int16_t right;
    int16_t bottom; /* smallest row */
    uint16_t tag;   /* 0 in nodes that the library makes; never read by it */
    uint16_t padding14;
    uint32_t kind; /* NODE_COMPONENT, NODE_LINE or NODE_BLOCK */
    uint16_t reserved20;
    uint8_t reserved22[10];
    uint16_t reserved32;
    uint8_t reserved34[66];
    uint32_t pixelCount; /* black pixels of a component; line building reuses it (see Grouping) */
    uint32_t lineHeight; /* character height of the line that mode 3 of Grouping keeps; 0: not measured */
    struct ComponentNode* prev;       /* previous sibling; null for the first */
    struct ComponentNode* next;       /* next sibling, null for the last; next free node of a free one */
    struct ComponentNode* parent;     /* null for a block */
    struct ComponentNode* firstChild; /* lines of a block, components of a line */
} ComponentNode;

enum {
    TAVRIX_STORE_CAPACITY = 65535,   /* node slots of a store, in one zeroed fixed block of global memory */
    TAVRIX_STORE_ALLOCATED = 0xFFFF, /* state of a store that holds its node block */
    TAVRIX_STORE_INITIAL_COUNT = 1000,
    TAVRIX_STORE_GROW_STEP = 500
};

/* A tree of blocks, lines and components, owned by the host. A header of zeros is an empty store
 * without memory. The library trusts the links of a store that a host hands in: they must form a tree
 * whose nodes lie in the node block. <tavrix/component_store.hpp> has a ready C++ implementation. */
typedef struct ComponentStore {
    ComponentNode* nodes;      /* slot 0, or null */
    ComponentNode* freeList;   /* free nodes, chained through next */
    ComponentNode* firstBlock; /* root list */
    uint32_t state;            /* TAVRIX_STORE_ALLOCATED or 0 */
    uint32_t growStep;         /* slots threaded onto the free list when it runs empty */
    uint32_t threadedCount;    /* slots threaded so far, from slot 0 up */
    uint32_t liveCount;        /* nodes handed out and not given back */
    uint32_t blockCount;
    uint32_t lineCount;
    uint32_t componentCount;
} ComponentStore;

/* A rectangle with a tag that is carried along. Inclusive columns and stored rows, top >= bottom. */
typedef struct BlockRect {
    int16_t left;
    int16_t top;
    int16_t right;
    int16_t bottom;
    int16_t tag;
} BlockRect;

/* The rectangle of a logo; all zero when there is none. */
typedef struct LogoRect {
    int16_t left;
    int16_t top;
    int16_t right;
    int16_t bottom;
    int16_t reserved; /* always 0 */
} LogoRect;

/* The rectangle of a text line, in the order of a RECT; all zero when there is none. */
typedef struct TrueLineRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} TrueLineRect;

enum {
    TAVRIX_SELECT_JOIN_PIECES = 0x4000, /* selectFlags: join side-by-side pieces of a line first */
    TAVRIX_SELECT_ALL_LINES = 0x8000    /* selectFlags: keep every line, not only the card's main one */
};

/* Options of text-line grouping. */
typedef struct GroupingOptions {
    uint16_t selectFlags;
    uint16_t reserved;
    uint16_t splitFlags; /* any bit but 0x40 and 0x80: split components that hold several characters */
} GroupingOptions;

/* Binarizes an image of 1, 8 or 24 bits into a new 1-bit image, which arrives unlocked.
 * mode: 0 local mean and deviation, 1 Otsu, 2 local mid-range, 3 two histogram peaks, 4 gradient,
 * 5 edge-guided regions, 6 isodata, 8 text lines, 9 sharpened edge-guided; any other value shows a
 * message and makes black exactly the pixels of value 0. An 8-bit image is worked on in place and
 * holds the result as well; a 24-bit one is left alone; a 1-bit one is copied (and arrives locked).
 * Returns 1, or -1 when the image is refused. */
TAVRIX_API int32_t TAVRIX_CALL Binarized(HGLOBAL image, DibRecord* result, int32_t mode);

/* As Binarized, with modes 5 and 8 treating the whole image as one block, without mode 9 and without
 * 24-bit images. The result arrives locked. Returns 1, or -1 when the image is refused. */
TAVRIX_API int32_t TAVRIX_CALL Binarized_Separate_Block(HGLOBAL image, DibRecord* result, int32_t mode);

/* Finds the 8-connected black components of a 1-bit image and puts them, as the children of one line
 * in one block, at the head of a freshly created store.
 * mode: 1 as found; 2 with every box grown by growX columns and growY rows (signed 16-bit values) on
 * each side, clipped to the image. Returns 1; 0 when image, store or mode is refused. */
TAVRIX_API uint8_t TAVRIX_CALL Extract_Eight_Connected_Components(DibRecord image, ComponentStore* store,
                                                                  int32_t mode, int32_t growX,
                                                                  int32_t growY);

/* Deletes noise components, then emptied lines and blocks, from a store made from this 1-bit image.
 * mode (low 16 bits): 0 by size: components of at most maxW x maxH pixels (low 16 bits each), thin
 * rules and large frames; 1 relative to the line's mean size; others do nothing. Returns 1; 0 when
 * image or store is refused. */
TAVRIX_API uint8_t TAVRIX_CALL Noise_Filter1(DibRecord image, ComponentStore* store, int32_t maxW,
                                             int32_t maxH, int32_t mode);

/* Groups a store's components. mode: 0 blocks along the direction of the text, 1 aligned blocks, 3 text
 * lines (reads options, and extra: bits 4 to 7 equal to 2 measure a line from its leftmost component);
 * 2 and others are refused. Mode 3 uses pixelCount as a label: 1002 in blocks, the component count in
 * the line it keeps. reserved is never read. Returns 1; 0 when refused or nothing is left. */
TAVRIX_API uint8_t TAVRIX_CALL Grouping(DibRecord image, ComponentStore* store,
                                        const GroupingOptions* options, int32_t mode, uint32_t extra,
                                        uint32_t reserved);

/* The rectangle of the main text line of a 1-bit image; all zero when refused or none is found. */
TAVRIX_API TrueLineRect TAVRIX_CALL FindTrueLineRect(const DibRecord* image, const GroupingOptions* options);

/* The rectangle of the line that most likely holds the logo, in a store of this 1-bit image grouped
 * with mode 1. The store is only read. All zero when refused or none is found. */
TAVRIX_API LogoRect TAVRIX_CALL FindCardLogo(DibRecord image, ComponentStore store);

/* Turns an 8-bit image a quarter clockwise. angle: degrees, low 16 bits, only 90. The result has the
 * gray colour table and 400 dots per inch. Returns 1, or -1 when image or angle is refused. */
TAVRIX_API int16_t TAVRIX_CALL RotateGrayImage(HGLOBAL image, int32_t angle, DibRecord* result);

/* Turns an image of 8 or 24 bits about its centre with bilinear interpolation on white. angle: degrees,
 * 0 to 90 (a negative one turns the other way); clockwise: low 16 bits, 0 is counter-clockwise. A 1-bit
 * image gives a black one of the turned size. Returns 1, or -1 when image or angle is refused. */
TAVRIX_API int16_t TAVRIX_CALL RotateImageFree(HGLOBAL image, double angle, int32_t clockwise,
                                               DibRecord* result);

/* As RotateImageFree, but refuses 1-bit images, and returns the handle of a second copy of the result,
 * which the host owns as well and which is locked once; 0 when refused. */
TAVRIX_API HGLOBAL TAVRIX_CALL RotateFree(HGLOBAL image, double angle, int32_t clockwise, DibRecord* result);

/* Cuts a block out of a 1-bit image (clipped to it) and turns it. code (low 16 bits): 0 as it is,
 * 1 quarter turn clockwise, 2 half turn, 3 quarter turn counter-clockwise, 4 upside down, 5 mirrored
 * left to right, then as 3; others as 0. Returns 1, or -1 when image or block is refused. */
TAVRIX_API int16_t TAVRIX_CALL RotateImageBlock(DibRecord source, BlockRect block, int32_t code,
                                                DibRecord* result);

/* Runs a neighbourhood operation. image: a handle, or null for the image that record describes; record
 * receives the result in every case. operation: 0 edge map (gray, 1-bit result), 1 opening, 2 closing,
 * 5 dilation of black (15 x 15; 1-bit), 3 mean of 3 x 3, 4 sharpening (gray); one that does not suit the
 * image only hands it back, gray ones packed to 1 bit with nonzero white. Works in place; 24-bit images
 * are converted to gray first and left alone. Returns 1, or 0 when the image is refused. */
TAVRIX_API uint8_t TAVRIX_CALL Morphology(HGLOBAL image, DibRecord* record, int32_t operation);

/* Hands back a copy of the image. Returns 1, or 0 when the image is refused. */
TAVRIX_API uint8_t TAVRIX_CALL RemoveImageBorder(HGLOBAL image, DibRecord* result);

/* Replaces a 1-bit image, which must lie in a block of global memory, by one with a white margin of a
 * multiple of 5 pixels (5, or more when its smaller side is below 32; only then marginSteps receives
 * the multiple). The old block is freed. Returns 0; an image that is refused is left alone. */
TAVRIX_API int16_t TAVRIX_CALL CopyImgWithWhiteSurr(DibRecord* image, int32_t* marginSteps);

#ifdef __cplusplus
}
#endif

#endif
