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

/* What TavrixBinarizeAutomatically finds out on its way. The host frees the blocks of all records that are
   not null. */
typedef struct TavrixAutomatic {
    DibRecord bits;
    /* Of the bits the letters in rows and the marks among them, where text lines are looked for. All null where
       there are hardly any letters. */
    DibRecord letters;
    int32_t scale;
    double confidence;
    char warnings[256]; /* how the result may have lost text, each ended by a new line; mostly empty */
} TavrixAutomatic;

/* As TavrixBinarizeAutomatically, with all of it. Returns 1, or 0 on failure with the result untouched. */
int32_t TavrixReadAutomatically(HGLOBAL image, int32_t scale, TavrixAutomatic* result);

/* Where the logo of a card is that is black on white: the bits of one of these results, or any other image of
   1 bit. Returns 1 with the box, rows counted from the bottom as FindCardLogo does; 0 where there is none, and on
   failure. */
int32_t TavrixFindLogo(HGLOBAL image, LogoRect* logo);

#ifdef __cplusplus
}
#endif

#endif
