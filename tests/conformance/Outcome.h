// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavrix/tavrix.h"

namespace tavrix::conformance {

// Something that a host sees after a call: an image, a store, numbers, a file.
class Part {
  public:
    virtual ~Part() = default;
    // One line without semicolons: digests that tell where two parts differ.
    virtual std::string Description() const = 0;
    // Where another part of the same kind first differs, exactly; empty when it does not.
    virtual std::string DifferenceTo(const Part& other) const = 0;
    // Writes the part to `path` with an ending of its own; a part with nothing to show writes nothing.
    virtual void Write(const std::string& path) const = 0;
};

class ImagePart : public Part {
  public:
    // Header, colour table, pixel rows and lock count; a record that was not written is "none", an image
    // that is still as it was before the call "unchanged".
    explicit ImagePart(const DibRecord& record, std::unique_ptr<const ImagePart> imageBefore = nullptr);
    std::string Description() const override;
    std::string DifferenceTo(const Part& other) const override;
    void Write(const std::string& path) const override;

  private:
    std::size_t RowBytes() const;

    std::unique_ptr<const ImagePart> before;
    bool isThere;
    BITMAPINFOHEADER header{};
    std::vector<std::uint8_t> palette;
    std::vector<std::uint8_t> rows;
    unsigned locks = 0;
};

class StorePart : public Part {
  public:
    explicit StorePart(const ComponentStore& store);
    std::string Description() const override;
    std::string DifferenceTo(const Part& other) const override;
    void Write(const std::string& path) const override;

  private:
    enum Field {
        kDepth,
        kSlot,
        kPrev,
        kParent,
        kLeft,
        kTop,
        kRight,
        kBottom,
        kTag,
        kKind,
        kCount,
        kHeight,
        kFields
    };
    using Node = std::array<std::int64_t, kFields>;
    static constexpr const char* kFieldNames[] = {"depth", "slot", "prev",       "parent",
                                                  "left",  "top",  "right",      "bottom",
                                                  "tag",   "kind", "pixelCount", "lineHeight"};

    void AddList(const ComponentStore& store, const ComponentNode* first, std::int64_t depth);
    std::string TextOf(const Node& node) const;

    std::array<std::int64_t, 7> counters;
    std::vector<Node> nodes;              // the tree, parents first
    std::vector<std::int64_t> freeSlots;  // in list order
};

class NumbersPart : public Part {
  public:
    explicit NumbersPart(std::vector<std::int64_t> values) : numbers(std::move(values)) {}
    std::string Description() const override;
    std::string DifferenceTo(const Part& other) const override;
    void Write(const std::string& path) const override;

  private:
    std::vector<std::int64_t> numbers;
};

// What a case gave: parts with names.
class Outcome {
  public:
    void Add(const std::string& name, std::unique_ptr<const Part> part);
    void AddNumbers(const std::string& name, std::vector<std::int64_t> values);
    // "returned 1; input unchanged; result 403x241x1 ..."
    std::string Text() const;
    // The first part that differs, and where, exactly.
    std::string DifferenceTo(const Outcome& other) const;
    void Write(const std::string& folder) const;

  private:
    struct Named {
        std::string name;
        std::unique_ptr<const Part> part;
    };
    std::vector<Named> parts;
};

// Where two texts of outcomes differ, as far as their digests tell.
std::string DifferenceOfTexts(const std::string& expected, const std::string& found);

}  // namespace tavrix::conformance
