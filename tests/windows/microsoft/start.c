/* SPDX-License-Identifier: MIT
 *
 * Where a program starts that is linked without Microsoft's start-up code. */
#include <windows.h>

int main(void);

void mainCRTStartup(void) {
    ExitProcess((UINT)main());
}
