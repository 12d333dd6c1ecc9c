// SPDX-License-Identifier: MIT
//
// A host that loads the library at run time, drives every exported function on small drawn pictures and
// prints a line a case: what was called, what it returned, and digests of everything that a host can see
// afterwards. The lines of every build must be the same.
//
// On 32-bit Windows each call goes over a thunk that varies the alignment of the stack and measures how
// many bytes of arguments the function removed.
#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tavrix/tavrix.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace {

int failures = 0;

void Require(bool holds, const std::string& what) {
    if (holds) return;
    std::printf("FAILED %s\n", what.c_str());
    ++failures;
}

// ---- the library

#ifdef _WIN32
constexpr char kDumpPath[] = "d:\\outputImg\\test.bmp";
void* Load(const char* path) {
    return reinterpret_cast<void*>(LoadLibraryA(path));
}
void* Find(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void Unload(void* library) {
    Require(FreeLibrary(static_cast<HMODULE>(library)) != 0, "FreeLibrary");
}
#else
constexpr char kDumpPath[] = "outputImg/test.bmp";
void* Load(const char* path) {
    return dlopen(path, RTLD_NOW);
}
void* Find(void* library, const char* name) {
    return dlsym(library, name);
}
void Unload(void* library) {
    dlclose(library);
}
#endif

void* library = nullptr;
std::set<std::string> called;

struct ExportInfo {
    const char* name;
    std::uint32_t argumentBytes;
};
#include "ExportTable.h"  // made from the list of exports: kExports

bool IsExported(const char* name) {
    for (const ExportInfo& info : kExports) {
        if (std::strcmp(info.name, name) == 0) return true;
    }
    return false;
}

#if defined(_WIN32) && defined(__i386__)
// Calls function with count words as stack arguments, the stack lying offset bytes below a multiple of 16
// before they are pushed. Gives eax, and how many bytes the function removed.
extern "C" std::uint32_t CallOnStack(void* function, const std::uint32_t* words, std::uint32_t count,
                                     std::uint32_t offset, std::uint32_t* removed);
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

template <class Value>
void PushWords(std::vector<std::uint32_t>& words, const Value& value) {
    const std::size_t count = (sizeof(Value) + 3) / 4;
    words.resize(words.size() + count);
    std::memcpy(&words[words.size() - count], &value, sizeof(Value));
}
#endif

template <class Function>
struct Caller;

template <class Result, class... Parameters>
struct Caller<Result(TAVRIX_CALL*)(Parameters...)> {
    const char* name;
    Result(TAVRIX_CALL* function)(Parameters...);

    Result operator()(Parameters... arguments) const {
        called.insert(name);
#if defined(_WIN32) && defined(__i386__)
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
        for (const ExportInfo& info : kExports) {
            if (std::strcmp(info.name, name) != 0) continue;
            Require(removed == info.argumentBytes, std::string(name) + ": bytes removed from the stack");
        }
        if (hidden) {
            Require(low == reinterpret_cast<std::uintptr_t>(&result), std::string(name) + ": result address");
        } else {
            std::memcpy(&result, &low, sizeof result < 4 ? sizeof result : 4);
        }
        return result;
#else
        return function(arguments...);
#endif
    }
    explicit operator bool() const {
        return function != nullptr;
    }
};

template <class Function>
Caller<Function> CallerOf(const char* name) {
    return {name, IsExported(name) ? reinterpret_cast<Function>(Find(library, name)) : nullptr};
}
#define TAVRIX_FIND(name) CallerOf<decltype(&name)>(#name)

// ---- digests

// FNV-1a of 64 bits.
class Digest {
  public:
    Digest& Bytes(const void* data, std::size_t count) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        for (std::size_t i = 0; i < count; ++i) value = (value ^ bytes[i]) * 0x100000001B3u;
        return *this;
    }
    template <class Number>
    Digest& Add(Number number) {
        const auto wide = static_cast<std::int64_t>(number);
        return Bytes(&wide, sizeof wide);
    }
    std::uint64_t Value() const { return value; }

  private:
    std::uint64_t value = 0xCBF29CE484222325u;
};

void Print(const std::string& name, std::int64_t result, const Digest& digest) {
    std::printf("%s = %" PRId64 " %016" PRIx64 "\n", name.c_str(), result, digest.Value());
}

unsigned LocksOf(HGLOBAL handle) {
    return GlobalFlags(handle) & GMEM_LOCKCOUNT;
}

// Header, colour table, pixel rows and lock count of the block; a record that was not written is "none".
void AddRecord(Digest& digest, const DibRecord& record) {
    if (record.header == nullptr) {
        digest.Add(-1);
        return;
    }
    digest.Bytes(record.header, 40).Bytes(record.palette, 4 * record.header->biClrUsed);
    digest.Bytes(record.bits, record.header->biSizeImage).Add(LocksOf(GlobalHandle(record.header)));
}

void FreeRecord(const DibRecord& record) {
    if (record.header == nullptr) return;
    Require(GlobalFree(GlobalHandle(record.header)) == nullptr, "a result is freed through its header");
}

// ---- pictures

// A drawn card: uneven light, a dark edge of the scanner, a mark, lines of letter-like strokes, noise.
int LevelAt(int x, int y, int width, int height) {
    const std::uint32_t noise = (static_cast<std::uint32_t>(y * 7919 + x) * 2654435761u) >> 16;
    int level = 185 + 45 * x / width - 35 * y / height + static_cast<int>(noise % 13) - 6;
    const int letter = height / 16 > 4 ? height / 16 : 4;  // height of letters
    const int line = y / (2 * letter), row = y % (2 * letter);
    const int column = x % letter, place = x / letter;
    const bool inText = x > width / 8 && x < width - width / 6 - 9 * line && row < letter && line % 3 != 2;
    const bool hasLetter = (place * 5 + line * 3) % 7 != 0 && column < letter - letter / 4;
    const std::uint32_t shape = static_cast<std::uint32_t>(place * 131 + line * 17) * 2654435761u >> 24;
    const int stroke = letter / 5 + 1;
    const bool inked = (column < stroke && (shape & 1) != 0) || (row < stroke && (shape & 2) != 0) ||
                       (row >= letter - stroke && (shape & 4) != 0) ||
                       (column >= letter / 2 && column < letter / 2 + stroke);
    if (inText && hasLetter && inked) level -= 110;
    const int markX = x - width * 4 / 5, markY = y - height * 3 / 4, radius = height / 8;
    if (markX * markX + markY * markY < radius * radius) level = 60 + static_cast<int>(noise % 9);
    if (width > 40 && x < width / 40 + y % 3) level = 25 + static_cast<int>(noise % 5);
    if (noise % 331 == 0) level -= 90;
    return level < 0 ? 0 : level;
}

// A packed image in a movable block, locked once by the host while the object lives.
class Picture {
  public:
    Picture(int width, int height, int bitCount) {
        const std::size_t rowBytes = (static_cast<std::size_t>(bitCount * width) + 31) / 32 * 4;
        const std::uint32_t colours = bitCount <= 8 ? 1u << bitCount : 0;
        handle = GlobalAlloc(GHND, 40 + 4 * colours + rowBytes * height);
        auto* block = static_cast<std::uint8_t*>(GlobalLock(handle));
        record.header = reinterpret_cast<BITMAPINFOHEADER*>(block);
        record.palette = reinterpret_cast<RGBQUAD*>(block + 40);
        record.bits = block + 40 + 4 * colours;
        BITMAPINFOHEADER& header = *record.header;
        header.biSize = 40;
        header.biWidth = width;
        header.biHeight = height;
        header.biPlanes = 1;
        header.biBitCount = static_cast<std::uint16_t>(bitCount);
        header.biSizeImage = static_cast<std::uint32_t>(rowBytes * height);
        header.biXPelsPerMeter = 11811;
        header.biYPelsPerMeter = 11811;
        header.biClrUsed = colours;
        for (std::uint32_t i = 0; i < colours; ++i) {
            const auto level = static_cast<std::uint8_t>(i * 255 / (colours - 1));
            record.palette[i] = {level, level, level, 0};
        }
        for (int y = 0; y < height; ++y) {
            std::uint8_t* row = record.bits + rowBytes * y;
            std::memset(row, 0xA5, rowBytes);  // padding that is not zero
            for (int x = 0; x < width; ++x) {
                const int level = LevelAt(x, y, width, height);
                const auto mask = static_cast<std::uint8_t>(0x80 >> x % 8);
                if (bitCount == 1) {
                    row[x / 8] =
                        static_cast<std::uint8_t>(level < 128 ? row[x / 8] & ~mask : row[x / 8] | mask);
                } else if (bitCount == 8) {
                    row[x] = static_cast<std::uint8_t>(level);
                } else {
                    row[3 * x] = static_cast<std::uint8_t>(level / 2 + x % 64);
                    row[3 * x + 1] = static_cast<std::uint8_t>(level);
                    row[3 * x + 2] = static_cast<std::uint8_t>(255 - (255 - level) * 3 / 4);
                }
            }
        }
        name = std::to_string(bitCount) + " bit " + std::to_string(width) + "x" + std::to_string(height);
    }
    ~Picture() {
        if (handle != nullptr) GlobalFree(handle);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    HGLOBAL handle;
    DibRecord record;
    std::string name;
};

constexpr std::array<std::array<int, 2>, 7> kSizes{
    {{1, 1}, {0, 3}, {7, 5}, {33, 31}, {64, 8}, {130, 70}, {403, 241}}};
constexpr int kDepths[] = {1, 8, 24};

template <class Action>
void ForEachPicture(Action action) {
    for (const auto& [width, height] : kSizes) {
        for (const int bitCount : kDepths)
            action([w = width, h = height, bitCount] { return Picture(w, h, bitCount); });
    }
}

template <class Action>
void ForEach1BitPicture(Action action) {
    for (const auto& [width, height] : kSizes) action(Picture(width, height, 1));
}

// What the host sees of its own picture and of the result, and the diagnostic file if the call wrote one.
void Report(const std::string& name, std::int64_t returned, const Picture& picture, const DibRecord& result) {
    Digest digest;
    AddRecord(digest, picture.record);
    const BITMAPINFOHEADER* header = result.header;
    Require(
        header == nullptr || (static_cast<const void*>(result.palette) == header + 1 &&
                              static_cast<const void*>(result.bits) == result.palette + header->biClrUsed),
        name + ": the result is one packed block");
    AddRecord(digest, result);
    if (std::FILE* dump = std::fopen(kDumpPath, "rb")) {
        std::vector<char> bytes(1 << 20);
        const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), dump);
        std::fclose(dump);
        std::remove(kDumpPath);
        digest.Bytes(bytes.data(), count);
        Print(name + " with a dump", returned, digest);
    } else {
        Print(name, returned, digest);
    }
    FreeRecord(result);
}

// ---- component stores

struct Store {
    Store() {
        auto* nodes =
            static_cast<ComponentNode*>(GlobalAlloc(GPTR, sizeof(ComponentNode) * TAVRIX_STORE_CAPACITY));
        for (int i = 0; i + 1 < TAVRIX_STORE_INITIAL_COUNT; ++i) nodes[i].next = &nodes[i + 1];
        header.nodes = header.freeList = nodes;
        header.state = TAVRIX_STORE_ALLOCATED;
        header.growStep = TAVRIX_STORE_GROW_STEP;
        header.threadedCount = TAVRIX_STORE_INITIAL_COUNT;
    }
    ~Store() { GlobalFree(GlobalHandle(header.nodes)); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    std::int64_t SlotOf(const ComponentNode* node) const {
        return node != nullptr ? node - header.nodes : -1;
    }

    void AddList(Digest& digest, const ComponentNode* first) const {
        for (const ComponentNode* node = first; node != nullptr; node = node->next) {
            digest.Add(SlotOf(node)).Add(SlotOf(node->prev)).Add(SlotOf(node->parent));
            digest.Add(node->left).Add(node->top).Add(node->right).Add(node->bottom).Add(node->tag);
            digest.Add(node->kind).Add(node->pixelCount).Add(node->lineHeight);
            if (node->kind != NODE_COMPONENT) AddList(digest, node->firstChild);
        }
        digest.Add(-1);
    }

    // The tree, the counters and the order of the free nodes.
    Digest Seen() const {
        Digest digest;
        AddList(digest, header.firstBlock);
        for (const ComponentNode* node = header.freeList; node != nullptr; node = node->next) {
            digest.Add(SlotOf(node));
        }
        return digest.Add(header.state)
            .Add(header.growStep)
            .Add(header.threadedCount)
            .Add(header.liveCount)
            .Add(header.blockCount)
            .Add(header.lineCount)
            .Add(header.componentCount);
    }

    ComponentStore header{};
};

// ---- cases

template <class Function>
void Binarize(const Caller<Function>& binarize) {
    if (!binarize) return;
    ForEachPicture([&](auto draw) {
        for (int mode = 0; mode <= 9; ++mode) {
            const auto picture = draw();
            DibRecord result{};
            const std::int64_t returned = binarize(picture.handle, &result, mode);
            Report(std::string(binarize.name) + " mode " + std::to_string(mode) + ", " + picture.name,
                   returned, picture, result);
        }
    });
}

void Rotate() {
    const auto gray = TAVRIX_FIND(RotateGrayImage);
    const auto imageFree = TAVRIX_FIND(RotateImageFree);
    const auto free = TAVRIX_FIND(RotateFree);
    ForEachPicture([&](auto draw) {
        for (const int angle : {90, 0x10000 + 90, 180}) {
            if (!gray) break;
            const auto picture = draw();
            DibRecord result{};
            const std::int64_t returned = gray(picture.handle, angle, &result);
            Report("RotateGrayImage by " + std::to_string(angle) + ", " + picture.name, returned, picture,
                   result);
        }
        for (const double angle : {0.0, 0.5, 7.25, 30.0, 45.0, 89.9, 90.0, -12.375, 200.0}) {
            for (const int clockwise : {0, 1}) {
                const auto picture = draw();
                const std::string name =
                    " by " + std::to_string(angle) + (clockwise != 0 ? " clockwise, " : ", ") + picture.name;
                DibRecord result{};
                if (imageFree) {
                    const std::int64_t returned = imageFree(picture.handle, angle, clockwise, &result);
                    Report("RotateImageFree" + name, returned, picture, result);
                }
                if (!free) continue;
                result = {};
                const HGLOBAL second = free(picture.handle, angle, clockwise, &result);
                if (second != nullptr) {
                    Require(GlobalHandle(result.header) != second && LocksOf(second) == 1 &&
                                std::memcmp(GlobalLock(second), result.header, GlobalSize(second)) == 0,
                            "RotateFree gives a second copy" + name);
                    GlobalFree(second);
                }
                Report("RotateFree" + name, second != nullptr, picture, result);
            }
        }
    });
}

void RotateBlocks() {
    const auto rotate = TAVRIX_FIND(RotateImageBlock);
    if (!rotate) return;
    ForEach1BitPicture([&](const Picture& picture) {
        const auto w = static_cast<std::int16_t>(picture.record.header->biWidth);
        const auto h = static_cast<std::int16_t>(picture.record.header->biHeight);
        const auto last = [](int size, int part, int of) {
            return static_cast<std::int16_t>(size * part / of - 1);
        };
        const BlockRect blocks[] = {{0, last(h, 1, 1), last(w, 1, 1), 0, 7},
                                    {static_cast<std::int16_t>(w / 5), last(h, 4, 5), last(w, 6, 7),
                                     static_cast<std::int16_t>(h / 4), 0},
                                    {-3, h, w, -2, 0},
                                    {5, 2, 3, 0, 0},
                                    {1, 0, 3, 4, 0}};
        for (const BlockRect& block : blocks) {
            for (int code = 0; code <= 6; ++code) {
                DibRecord result{};
                const std::int64_t returned = rotate(picture.record, block, code, &result);
                Report("RotateImageBlock " + std::to_string(block.left) + ".." + std::to_string(block.right) +
                           ", " + std::to_string(block.bottom) + ".." + std::to_string(block.top) + " code " +
                           std::to_string(code) + ", " + picture.name,
                       returned, picture, result);
            }
        }
    });
}

void Surround() {
    const auto remove = TAVRIX_FIND(RemoveImageBorder);
    const auto surround = TAVRIX_FIND(CopyImgWithWhiteSurr);
    ForEachPicture([&](auto draw) {
        if (remove) {
            const auto picture = draw();
            DibRecord result{};
            const std::int64_t returned = remove(picture.handle, &result);
            Report("RemoveImageBorder, " + picture.name, returned, picture, result);
        }
        if (surround) {
            auto picture = draw();
            std::int32_t steps = -7;
            const std::int64_t returned = surround(&picture.record, &steps);
            picture.handle = GlobalHandle(picture.record.header);  // the old block is gone
            Report("CopyImgWithWhiteSurr to " + std::to_string(steps) + ", " + picture.name, returned,
                   picture, {});
        }
    });
}

void Morph() {
    const auto morphology = TAVRIX_FIND(Morphology);
    if (!morphology) return;
    ForEachPicture([&](auto draw) {
        for (int operation = 0; operation <= 6; ++operation) {
            for (const bool byRecord : {false, true}) {
                const auto picture = draw();
                DibRecord result = byRecord ? picture.record : DibRecord{};
                const std::int64_t returned =
                    morphology(byRecord ? nullptr : picture.handle, &result, operation);
                if (byRecord && result.header == picture.record.header) result = {};  // not replaced
                Report("Morphology " + std::to_string(operation) + (byRecord ? " by record, " : ", ") +
                           picture.name,
                       returned, picture, result);
            }
        }
    });
}

void Components() {
    const auto extract = TAVRIX_FIND(Extract_Eight_Connected_Components);
    const auto filter = TAVRIX_FIND(Noise_Filter1);
    const auto group = TAVRIX_FIND(Grouping);
    const auto logo = TAVRIX_FIND(FindCardLogo);
    const auto trueLine = TAVRIX_FIND(FindTrueLineRect);
    ForEach1BitPicture([&](const Picture& picture) {
        const GroupingOptions options[] = {
            {0, 0, 0}, {TAVRIX_SELECT_ALL_LINES, 0, 1}, {TAVRIX_SELECT_JOIN_PIECES, 0, 0x40}};
        for (const GroupingOptions& option : options) {
            if (!trueLine) break;
            const TrueLineRect rect = trueLine(&picture.record, &option);
            Print("FindTrueLineRect " + std::to_string(option.selectFlags) + ", " + picture.name, 0,
                  Digest().Add(rect.left).Add(rect.top).Add(rect.right).Add(rect.bottom));
        }
        for (int mode = 0; mode <= 3; ++mode) {
            if (!extract) break;
            Store store;
            std::int64_t returned = extract(picture.record, &store.header, mode, 2, 0x10000 + 1);
            Print("Extract_Eight_Connected_Components mode " + std::to_string(mode) + ", " + picture.name,
                  returned, store.Seen());
        }
        for (int mode = 0; mode <= 3; ++mode) {
            for (int filterMode = 0; filterMode <= 2; ++filterMode) {
                if (!extract || !filter) break;
                const std::string name = " mode " + std::to_string(mode) + " after filter " +
                                         std::to_string(filterMode) + ", " + picture.name;
                Store store;
                extract(picture.record, &store.header, 1, 0, 0);
                std::int64_t returned = filter(picture.record, &store.header, 2, 2, 0x30000 + filterMode);
                if (mode == 0) Print("Noise_Filter1" + name, returned, store.Seen());
                if (!group) continue;
                returned = group(picture.record, &store.header, &options[filterMode], mode, 0x20, 12345);
                Print("Grouping" + name, returned, store.Seen());
                if (!logo) continue;
                const LogoRect rect = logo(picture.record, store.header);
                Print("FindCardLogo" + name, 0,
                      Digest()
                          .Add(rect.left)
                          .Add(rect.top)
                          .Add(rect.right)
                          .Add(rect.bottom)
                          .Add(rect.reserved));
                Print("  and its store", 0, store.Seen());
            }
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    library = Load(argv[1]);
    if (library == nullptr) {
        std::printf("FAILED to load %s\n", argv[1]);
        return 1;
    }
    for (const ExportInfo& info : kExports) Require(Find(library, info.name) != nullptr, info.name);

    Binarize(TAVRIX_FIND(Binarized));
    Binarize(TAVRIX_FIND(Binarized_Separate_Block));
    Components();
    Rotate();
    RotateBlocks();
    Surround();
    Morph();

    for (const ExportInfo& info : kExports)
        Require(called.count(info.name) != 0, std::string("no case for ") + info.name);
    Unload(library);
    return failures == 0 ? 0 : 1;
}
