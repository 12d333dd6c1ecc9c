/* SPDX-License-Identifier: MIT
 *
 * Stands in for the system's user32.dll in runs without a screen: a message box is a line on standard error.
 */
#define _USER32_ /* declares the functions as this library's own */
#include <stdio.h>
#include <windows.h>

__declspec(dllexport) int WINAPI MessageBoxW(HWND owner, const WCHAR* text, const WCHAR* caption, UINT type) {
    char line[2048], utf8[2][800];
    DWORD written;
    int length;
    (void)owner;
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8[0], sizeof utf8[0], NULL, NULL);
    WideCharToMultiByte(CP_UTF8, 0, caption, -1, utf8[1], sizeof utf8[1], NULL, NULL);
    length = snprintf(line, sizeof line, "MessageBoxW type=0x%x \"%s\": %s\n", type, utf8[1], utf8[0]);
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), line, (DWORD)length, &written, NULL);
    return IDOK;
}
