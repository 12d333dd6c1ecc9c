// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "GlobalMemory.h"
#include "tavrix/tavrix.h"

namespace tavrix::conformance {

// Draws that are the same in every build: the generator's numbers are laid down by the standard, the
// distributions are not. Draw one number a statement, since arguments have no order.
class Draws {
  public:
    explicit Draws(std::uint32_t seed) : random(seed) {}

    // From low up to high, which is no less.
    int Between(int low, int high) {
        return low + static_cast<int>(random() % static_cast<std::uint32_t>(high - low + 1));
    }
    bool Percent(int share) { return Between(0, 99) < share; }
    bool OneIn(int count) { return Between(1, count) == 1; }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(random() >> 24); }

  private:
    std::mt19937 random;
};

// A gray picture under the pen: 0 is black, 255 white, rows in memory order, padded to four bytes.
class Page {
  public:
    Page(int pageWidth, int pageHeight, int paper = 255);

    std::uint8_t* Row(int y) { return bytes.data() + rowBytes * static_cast<std::size_t>(y); }
    const std::uint8_t* Row(int y) const { return bytes.data() + rowBytes * static_cast<std::size_t>(y); }
    // Paints w x h pixels from (x, y) on, those inside the page; every pitch-th of both.
    void Fill(int x, int y, int w, int h, int tone, int pitch = 1);
    // Adds noise of up to amount either way.
    void AddNoise(Draws& draw, int amount);

    int width;
    int height;
    std::size_t rowBytes;
    std::vector<std::uint8_t> bytes;
};

// A page that is drawn when a case first asks for it.
class Sheet {
  public:
    Sheet(std::string sheetName, std::function<Page()> pen)
        : name(std::move(sheetName)), draw(std::move(pen)) {}
    const Page& Drawn() const;

    std::string name;

  private:
    std::function<Page()> draw;
    mutable std::unique_ptr<Page> page;
};
using SheetPointer = std::shared_ptr<const Sheet>;

// A page as a packed image of 1, 8 or 24 bits in a movable block, which the host has locked once. 1-bit
// pixels are black below middle gray; bytes of padding are not zero.
class Picture {
  public:
    Picture(const Page& page, int bitCount);
    ~Picture();
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    HGLOBAL handle;
    DibRecord record;
};

unsigned LocksOf(HGLOBAL handle);

}  // namespace tavrix::conformance
