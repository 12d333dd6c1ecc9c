/* SPDX-License-Identifier: MIT
 *
 * Win32 global memory for hosts outside Windows, with the argument order, flag values and meaning of
 * the Win32 functions of the same names. Safe to use from several threads. A null or foreign handle or
 * pointer is refused, never followed; so is the handle of a movable block after it was freed, for ever. The
 * handle of a fixed block is its address: once freed it is refused until a new block lies there.
 *
 * The library itself does not call these names: a program may bring functions of its own that are called
 * the same, but only handles of this library's blocks can be handed to it.
 */
#ifndef TAVRIX_GLOBAL_MEMORY_H
#define TAVRIX_GLOBAL_MEMORY_H

#include <stddef.h>
#include <stdint.h>

#ifdef _WIN32
#error "On Windows use the system's own global memory: include <windows.h>"
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define TAVRIX_PLATFORM_API __attribute__((visibility("default")))

#ifndef TAVRIX_HOST_TYPES /* see tavrix.h: the program's own HGLOBAL and constants */
typedef void* HGLOBAL;

enum {
    GMEM_FIXED = 0x0000,    /* the handle is the block's address */
    GMEM_MOVEABLE = 0x0002, /* the handle is not an address; GlobalLock gives it */
    GMEM_ZEROINIT = 0x0040,
    GHND = GMEM_MOVEABLE | GMEM_ZEROINIT,
    GPTR = GMEM_FIXED | GMEM_ZEROINIT,
    GMEM_LOCKCOUNT = 0x00FF,     /* mask of GlobalFlags: lock count of a movable block */
    GMEM_DISCARDED = 0x4000,     /* GlobalFlags of a movable block of 0 bytes */
    GMEM_INVALID_HANDLE = 0x8000 /* GlobalFlags of a handle that is none */
};
#endif

/* A new block of bytes bytes, or null. Blocks are always zeroed. A movable block of 0 bytes is born
 * discarded: a handle without memory, which GlobalLock refuses. */
TAVRIX_PLATFORM_API HGLOBAL GlobalAlloc(unsigned flags, size_t bytes);
/* The block's address, null for a handle that is none. Counts locks of movable blocks. */
TAVRIX_PLATFORM_API void* GlobalLock(HGLOBAL handle);
/* Takes one lock back. Returns 1 while locks remain or for a fixed block, else 0. */
TAVRIX_PLATFORM_API int GlobalUnlock(HGLOBAL handle);
/* Frees a block, locked or not. Returns null, or the handle when it is none. */
TAVRIX_PLATFORM_API HGLOBAL GlobalFree(HGLOBAL handle);
/* The handle of the block that starts at address, or null. */
TAVRIX_PLATFORM_API HGLOBAL GlobalHandle(const void* address);
/* The block's size in bytes as asked for; 0 for a handle that is none. */
TAVRIX_PLATFORM_API size_t GlobalSize(HGLOBAL handle);
/* Lock count in the low byte (255 for more), GMEM_DISCARDED, or GMEM_INVALID_HANDLE. */
TAVRIX_PLATFORM_API unsigned GlobalFlags(HGLOBAL handle);

#ifdef __cplusplus
}
#endif

#endif
