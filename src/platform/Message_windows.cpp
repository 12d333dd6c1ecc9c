// SPDX-License-Identifier: MIT
#include <array>

#include "platform/Message.h"
#include "tavrix/tavrix.h"

namespace tavrix::platform {
namespace {

constexpr UINT kTraditionalChinese = 950;
constexpr int kMaxTextUnits = 256;  // UTF-16 units, end included
constexpr wchar_t kCaption[] = L"Tavrix";

template <class Function>
Function* Find(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// What little of the window manager finds the owner; any of it may be missing on a system without windows.
struct WindowManager {
    HMODULE module = GetModuleHandleW(L"user32.dll");
    decltype(EnumThreadWindows)* enumThreadWindows =
        Find<decltype(EnumThreadWindows)>(module, "EnumThreadWindows");
    decltype(IsWindowVisible)* isWindowVisible = Find<decltype(IsWindowVisible)>(module, "IsWindowVisible");
    decltype(GetWindow)* getWindow = Find<decltype(GetWindow)>(module, "GetWindow");
    decltype(GetLastActivePopup)* getLastActivePopup =
        Find<decltype(GetLastActivePopup)>(module, "GetLastActivePopup");
};

struct Search {
    const WindowManager& windows;
    HWND found = nullptr;
};

BOOL CALLBACK TakeMainWindow(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<Search*>(parameter);
    const bool isMain =
        search.windows.isWindowVisible(window) && search.windows.getWindow(window, GW_OWNER) == nullptr;
    if (isMain) search.found = window;
    return !isMain;
}

// The host's main window, or the dialog that is open above it: a visible window without an owner. Only
// the calling thread's windows count, since a box owned by another thread's window waits for that thread.
HWND OwnerWindow() {
    const WindowManager windows;
    if (windows.enumThreadWindows == nullptr || windows.isWindowVisible == nullptr ||
        windows.getWindow == nullptr) {
        return nullptr;
    }
    Search search{windows};
    windows.enumThreadWindows(GetCurrentThreadId(), TakeMainWindow, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr || windows.getLastActivePopup == nullptr) return search.found;
    return windows.getLastActivePopup(search.found);
}

}  // namespace

void ShowMessage(const Message& message) {
    std::array<wchar_t, kMaxTextUnits> text{};
    // Systems of other languages may come without code page 950.
    if (MultiByteToWideChar(kTraditionalChinese, 0, message.codePage950, -1, text.data(), kMaxTextUnits) ==
        0) {
        MultiByteToWideChar(CP_UTF8, 0, message.utf8, -1, text.data(), kMaxTextUnits);
    }
    MessageBoxW(OwnerWindow(), text.data(), kCaption, MB_OK);
}

}  // namespace tavrix::platform
