/* SPDX-License-Identifier: MIT */
/* libtavrixauto: the automatic mode of the tavrix command for other hosts. It calls libtavrix and needs
   nothing else. */
#ifndef TAVRIX_AUTOMATIC_H
#define TAVRIX_AUTOMATIC_H

#include <tavrix/tavrix.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Black and white with as much of the text as can be had, light text as dark. image: 1, 8 or 24 bits;
   not changed, and the host's own. scale: 1 to 3, the result's sides in those of the image, or 0: twice
   where the type is small. confidence, unless null: the share of the black pixels that belong to letters
   in rows, 0 to 1. Returns the scale and fills the record, whose block the host frees; or 0 on failure,
   with the record untouched. Shows no messages. */
int32_t TavrixBinarizeAutomatically(HGLOBAL image, DibRecord* result, int32_t scale, double* confidence);

#ifdef __cplusplus
}
#endif

#endif
