// SPDX-License-Identifier: MIT
#include "platform/ExtensionModule.h"
#include "tavrix/tavrix.h"

namespace {

using namespace tavrix::platform;

// Ready before the entry point runs, whatever the order of initialisers.
constinit ModuleChain chain;
constinit ExtensionRecord record;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    return ModuleEntry(chain, record, instance, static_cast<EntryReason>(reason));
}
