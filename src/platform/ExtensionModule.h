// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// How the library joins a host's application framework as an extension module. The names of the
// framework's functions are those that its hosts know.
namespace tavrix::platform {

using Instance = void*;  // HINSTANCE

struct CDynLinkLibrary;

// What the framework keeps about an extension module.
struct ExtensionRecord {
    bool initialized = false;
    Instance module = nullptr;
    Instance resources = nullptr;  // where its resources are looked for
};

class ExtensionFramework {
  public:
    virtual ~ExtensionFramework() = default;
    // Fills the record; false refuses the module.
    virtual bool AfxInitExtensionModule(ExtensionRecord& record, Instance instance) = 0;
    // Enters the module into the chain in which the framework looks for resources. The framework owns the
    // entry until AfxTermExtensionModule.
    virtual void NewCDynLinkLibrary(const ExtensionRecord& record) = 0;
    // Removes the module's entries, or with all those of every module.
    virtual void AfxTermExtensionModule(ExtensionRecord& record, bool all) = 0;
};

// The chain of this process. Loading and unloading of libraries is serialised by the system, and so is
// the use of it.
class ModuleChain : public ExtensionFramework {
  public:
    ModuleChain() = default;
    ~ModuleChain() override;
    ModuleChain(const ModuleChain&) = delete;
    ModuleChain& operator=(const ModuleChain&) = delete;

    bool AfxInitExtensionModule(ExtensionRecord& record, Instance instance) override;
    void NewCDynLinkLibrary(const ExtensionRecord& record) override;
    void AfxTermExtensionModule(ExtensionRecord& record, bool all) override;

    // The newest entry, or null.
    const CDynLinkLibrary* First() const { return first; }

  private:
    CDynLinkLibrary* first = nullptr;
};

// One entry of the chain.
struct CDynLinkLibrary {
    Instance module;
    Instance resources;
    CDynLinkLibrary* next;
};

enum class EntryReason : std::uint32_t {
    ProcessDetach = 0,
    ProcessAttach = 1,
    ThreadAttach = 2,
    ThreadDetach = 3
};

// The module's entry point: registers with the framework when the library is loaded and takes leave when
// it is unloaded. 0 makes the load fail.
int ModuleEntry(ExtensionFramework& framework, ExtensionRecord& record, Instance instance,
                EntryReason reason);

}  // namespace tavrix::platform
