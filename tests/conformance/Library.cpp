// SPDX-License-Identifier: MIT
#include "Library.h"

#ifdef __EMSCRIPTEN__
#define TAVRIX_LINKED(name) reinterpret_cast<void*>(&name)
#else
#define TAVRIX_LINKED(name) nullptr
#ifndef _WIN32
#include <dlfcn.h>
#endif
#endif

namespace tavrix::conformance {
namespace {

struct ExportInfo {
    const char* name;
    std::uint32_t argumentBytes;
    void* linked;  // where the library is part of this program
};
#include "ExportTable.h"  // made from the list of exports: kExports

}  // namespace

#ifdef TAVRIX_COUNTS_ARGUMENTS
asm(R"(
    .text
    .globl _CallOnStack
_CallOnStack:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    andl $-16, %esp
    subl 20(%ebp), %esp
    movl 16(%ebp), %ecx
    movl 12(%ebp), %esi
1:  testl %ecx, %ecx
    jz 2f
    decl %ecx
    pushl (%esi,%ecx,4)
    jmp 1b
2:  movl %esp, %ebx
    call *8(%ebp)
    movl %esp, %ecx
    subl %ebx, %ecx
    movl 24(%ebp), %edx
    movl %ecx, (%edx)
    leal -12(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret
)");
#endif

#ifdef __EMSCRIPTEN__
Library::Library(const std::string& path) : module(const_cast<ExportInfo*>(kExports)) {
#elif defined(_WIN32)
Library::Library(const std::string& path) : module(reinterpret_cast<void*>(LoadLibraryA(path.c_str()))) {
#else
Library::Library(const std::string& path) : module(dlopen(path.c_str(), RTLD_NOW)) {
#endif
    Require(module != nullptr, "to load " + path);
    if (module == nullptr) return;
    for (const ExportInfo& info : kExports) Require(AddressOf(info.name) != nullptr, info.name);
}

Library::~Library() {
    if (module == nullptr) return;
#ifdef __EMSCRIPTEN__
#elif defined(_WIN32)
    Require(FreeLibrary(static_cast<HMODULE>(module)) != 0, "FreeLibrary");
#else
    Require(dlclose(module) == 0, "dlclose");
#endif
}

void Library::ChooseMemory() const {
#if !defined(_WIN32) && !defined(__EMSCRIPTEN__)
    const auto find = [this]<class Function>(const char* name, Function& function) {
        function = reinterpret_cast<Function>(AddressOf(name));
        Require(function != nullptr, name);
    };
    find("GlobalAlloc", GlobalAlloc);
    find("GlobalLock", GlobalLock);
    find("GlobalFree", GlobalFree);
    find("GlobalHandle", GlobalHandle);
    find("GlobalSize", GlobalSize);
    find("GlobalFlags", GlobalFlags);
#endif
}

void* Library::AddressOf(const std::string& name) const {
#ifdef __EMSCRIPTEN__
    for (const ExportInfo& info : kExports) {
        if (name == info.name) return info.linked;
    }
    return nullptr;
#elif defined(_WIN32)
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name.c_str()));
#else
    return dlsym(module, name.c_str());
#endif
}

std::uint32_t Library::ArgumentBytesOf(const std::string& name) {
    for (const ExportInfo& info : kExports) {
        if (name == info.name) return info.argumentBytes;
    }
    Require(false, name + " is not in the list of exports");
    return 0;
}

void Library::RequireEveryExportCalled() const {
    for (const ExportInfo& info : kExports) {
        Require(called.contains(info.name), std::string("a case for ") + info.name);
    }
}

}  // namespace tavrix::conformance
