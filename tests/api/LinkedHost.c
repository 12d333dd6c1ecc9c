/* SPDX-License-Identifier: MIT
 *
 * A host in C99 that is linked to the library: every exported function resolves, and a call arrives. */
#include <stdio.h>

#include "tavrix/tavrix.h"

typedef void (*AnyFunction)(void);

static const AnyFunction kExports[] = {
#include "ExportNames.h" /* made from the list of exports */
};

int main(void) {
    size_t i;
    for (i = 0; i < sizeof kExports / sizeof kExports[0]; ++i) {
        if (kExports[i] == NULL) return 1;
    }
    if (Binarized(NULL, NULL, 1) != -1) return 2;
    printf("%u functions\n", (unsigned)i);
    return 0;
}
