// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "Checks.h"
#include "GlobalMemory.h"
#include "tavrix/tavrix.h"

namespace tavrix::conformance {

#if defined(_WIN32) && defined(__i386__)
#define TAVRIX_COUNTS_ARGUMENTS
// Calls function with count words as stack arguments, the stack lying offset bytes below a multiple of 16
// before they are pushed. Gives eax, and how many bytes the function removed.
extern "C" std::uint32_t CallOnStack(void* function, const std::uint32_t* words, std::uint32_t count,
                                     std::uint32_t offset, std::uint32_t* removed);

template <class Value>
void PushWords(std::vector<std::uint32_t>& words, const Value& value) {
    const std::size_t count = (sizeof(Value) + 3) / 4;
    words.resize(words.size() + count);
    std::memcpy(&words[words.size() - count], &value, sizeof(Value));
}
#endif

template <class Function>
class Export;

// An exported function. On 32-bit Windows each call goes over a thunk that varies the alignment of the
// stack and measures how many bytes of arguments the function removed.
template <class Result, class... Parameters>
class Export<Result(TAVRIX_CALL*)(Parameters...)> {
  public:
    Export(std::string exportName, void* address, std::uint32_t bytes)
        : name(std::move(exportName)),
          function(reinterpret_cast<Result(TAVRIX_CALL*)(Parameters...)>(address)),
          argumentBytes(bytes) {}

    Result operator()(Parameters... arguments) const {
#ifdef TAVRIX_COUNTS_ARGUMENTS
        Result result{};
        std::vector<std::uint32_t> words;
        // A structure of more than 8 bytes is returned where a hidden first argument points.
        constexpr bool hidden = sizeof(Result) > 8;
        if (hidden) PushWords(words, &result);
        (PushWords(words, arguments), ...);
        static std::uint32_t offset = 0;
        offset = (offset + 4) % 16;
        std::uint32_t removed = 0;
        const std::uint32_t low = CallOnStack(reinterpret_cast<void*>(function), words.data(),
                                              static_cast<std::uint32_t>(words.size()), offset, &removed);
        Require(removed == argumentBytes, name + ": bytes removed from the stack");
        if (hidden) {
            Require(low == reinterpret_cast<std::uintptr_t>(&result), name + ": result address");
        } else {
            std::memcpy(&result, &low, sizeof result < 4 ? sizeof result : 4);
        }
        return result;
#else
        return function(arguments...);
#endif
    }

  private:
    std::string name;
    Result(TAVRIX_CALL* function)(Parameters...);
    std::uint32_t argumentBytes;  // that a call removes from a 32-bit Windows stack
};

// A build of the library, loaded at run time.
class Library {
  public:
    // Every export must be there.
    explicit Library(const std::string& path);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    bool IsLoaded() const { return module != nullptr; }
    // The cases that follow have their pictures in this build's memory.
    void ChooseMemory() const;
    void RequireEveryExportCalled() const;

    template <class Function>
    Export<Function> Find(const std::string& name) {
        called.insert(name);
        return {name, AddressOf(name), ArgumentBytesOf(name)};
    }

  private:
    void* AddressOf(const std::string& name) const;
    static std::uint32_t ArgumentBytesOf(const std::string& name);

    void* module;
    std::set<std::string> called;
};

#define TAVRIX_FIND(library, name) (library).Find<decltype(&name)>(#name)

}  // namespace tavrix::conformance
