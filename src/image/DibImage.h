// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "image/DibLayout.h"
#include "tavrix/tavrix.h"

namespace tavrix {

class DibImage;
// An image of the caller's. A function that takes one over, or gives one away, says so by this type; every
// other pointer or reference to an image is borrowed.
using ImagePtr = std::unique_ptr<DibImage>;

// One packed device-independent bitmap in global memory (layout: tavrix.h). The wrapper either borrows a
// host's block or owns a block of its own, which goes with it. Rows are never flipped: y is the index of the
// stored row.
class DibImage {
  public:
    // Ways to an image; null when memory runs out or a handle names no block.
    // Borrows a host's block, locked while the wrapper lives, or what a record points to.
    [[nodiscard]] static ImagePtr Borrow(HGLOBAL handle);
    [[nodiscard]] static ImagePtr Borrow(const DibRecord& record);
    // A black image with its standard colour table, at 400 dots per inch.
    [[nodiscard]] static ImagePtr New(int width, int height, int bitCount);
    // The same with pixels of any value, padding zeroed; to be handed over (HandOver) or used up. With room
    // for as many pixels again behind them, for what works on the image: two blocks of a size, freed after
    // every call, would go back to the system and be cleared anew for the next one.
    enum class Room { kNone, kOfPixels };
    [[nodiscard]] static ImagePtr NewUncleared(int width, int height, int bitCount, Room room = Room::kNone);
    // A black image with the header and colour table of another one.
    [[nodiscard]] static ImagePtr BlankLike(const DibImage& other);

    // The same as constructors. What they leave null says that they failed: header and bits of a borrowed
    // handle, bits of a blank image. An empty image waits for Create.
    DibImage() = default;
    explicit DibImage(const HGLOBAL& handle);
    DibImage(BITMAPINFOHEADER* header, RGBQUAD* palette, std::uint8_t* bits);
    explicit DibImage(const DibImage* other);
    virtual ~DibImage();
    DibImage(const DibImage&) = delete;
    DibImage& operator=(const DibImage&) = delete;

    // Allocates a zeroed block in place of the one before; false when that fails. Resolutions are in dots per
    // inch, stored times 254.
    [[nodiscard]] bool Create(int width, int height, int bitCount, double xResolution, double yResolution);
    // The same at 400 dots per inch and with a colour table.
    [[nodiscard]] bool Create(int width, int height, int bitCount);
    // Black and white for 2 entries, the gray ramp for 256, else nothing.
    void InitPalette();

    bool Is1Bit() const { return header->biBitCount == 1; }
    bool Is24Bit() const { return header->biBitCount == 24; }
    int Width() const { return static_cast<int>(header->biWidth); }
    int Height() const { return static_cast<int>(header->biHeight); }
    unsigned RowBytes() const {
        return static_cast<unsigned>(RowBytesOf(header->biBitCount, header->biWidth));
    }
    std::uint8_t* Row(int y) { return bits + static_cast<std::size_t>(RowBytes()) * y; }
    const std::uint8_t* Row(int y) const { return bits + static_cast<std::size_t>(RowBytes()) * y; }

    // The room behind the pixel rows, null where there is none.
    std::uint8_t* RoomOfPixels();

    // Single pixels, for the odd access; loops work on rows. x counts bytes in 24-bit images. Outside the
    // image a 1-bit pixel reads 1 (white), any other 0; writes there are dropped.
    int GetPixel(int x, int y) const;
    bool SetPixel(int x, int y, int value);
    bool SetBit(int x, int y, int on);  // 1-bit images only

    bool Lock();     // of the block that the handle names; false when it names none
    void Detach();   // forgets header and bits without unlocking
    bool Release();  // unlocks a host's block or frees an own one, as the destructor does; always true

    // Hand-over to the host: one new movable block, which the host owns, left locked once. False, with the
    // target left alone, when memory runs out.
    [[nodiscard]] bool ExportToRecord(DibRecord* record) const;
    [[nodiscard]] bool ExportToHandle(HGLOBAL* handle) const;
    // Gives the host a NewUncleared image's own block, without a copy. False, with both left alone, for null.
    [[nodiscard]] static bool HandOver(ImagePtr image, DibRecord* record);
    // A 1-bit copy: of this 1-bit image, or (needsPacking) of this 8-bit one with nonzero pixels white.
    [[nodiscard]] bool ExportOneBit(DibRecord* record, bool needsPacking) const;

    // Turns this 8-bit image into a 1-bit one inside its block: values above 1 of the source become white.
    // The source has this image's size and 8-bit row length and may not overlap it. Always true.
    bool PackToOneBit(const std::uint8_t* source);
    bool PackToOneBit(const DibImage& source) { return PackToOneBit(source.bits); }
    // Copies the pixel rows of an image of this format and size. Always true.
    bool CopyBitsFrom(const DibImage& source);
    // Fills an 8-bit image of the same size from this 24-bit one: trunc(0.299 R + 0.587 G + 0.114 B + 0.5).
    // Always true.
    bool ConvertToGray(DibImage& gray) const;
    // Writes a Windows bitmap file. False when the file cannot be made (silently) or written (message).
    bool WriteBmp(const char* path) const;

    BITMAPINFOHEADER* header = nullptr;
    RGBQUAD* palette = nullptr;
    std::uint8_t* bits = nullptr;
    HGLOBAL handle = nullptr;
    bool ownsHandle = true;

  private:
    void PointInto(void* block);
    void WriteHeader(void* block, int width, int height, int bitCount);
};

}  // namespace tavrix
