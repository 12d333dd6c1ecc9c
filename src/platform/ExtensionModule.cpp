// SPDX-License-Identifier: MIT
#include "platform/ExtensionModule.h"

#include <new>

namespace tavrix::platform {

ModuleChain::~ModuleChain() {
    ExtensionRecord none;
    none.initialized = true;
    AfxTermExtensionModule(none, true);
}

bool ModuleChain::AfxInitExtensionModule(ExtensionRecord& record, Instance instance) {
    if (instance == nullptr) return false;
    record = {true, instance, instance};
    return true;
}

void ModuleChain::NewCDynLinkLibrary(const ExtensionRecord& record) {
    auto* entry = new (std::nothrow) CDynLinkLibrary{record.module, record.resources, first};
    if (entry != nullptr) first = entry;
}

void ModuleChain::AfxTermExtensionModule(ExtensionRecord& record, bool all) {
    if (!record.initialized) return;
    for (CDynLinkLibrary** link = &first; *link != nullptr;) {
        CDynLinkLibrary* entry = *link;
        if (all || entry->module == record.module) {
            *link = entry->next;
            delete entry;
        } else {
            link = &entry->next;
        }
    }
    record = {};
}

int ModuleEntry(ExtensionFramework& framework, ExtensionRecord& record, Instance instance,
                EntryReason reason) {
    switch (reason) {
        case EntryReason::ProcessAttach:
            if (!framework.AfxInitExtensionModule(record, instance)) return 0;
            framework.NewCDynLinkLibrary(record);
            return 1;
        case EntryReason::ProcessDetach: framework.AfxTermExtensionModule(record, false); return 1;
        case EntryReason::ThreadAttach:
        case EntryReason::ThreadDetach: break;
    }
    return 1;
}

}  // namespace tavrix::platform
