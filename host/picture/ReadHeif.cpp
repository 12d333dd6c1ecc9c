// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <libheif/heif.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "picture/Exif.h"
#include "picture/PictureReader.h"

namespace host {
namespace {

constexpr char kLibrary[] = "libheif.so.1";

// libheif brings several video codecs along: it is loaded when the first picture needs it.
class Heif {
  public:
    static const Heif& Get() {
        static const Heif library;
        return library;
    }

    decltype(&heif_context_alloc) contextAlloc;
    decltype(&heif_context_free) contextFree;
    decltype(&heif_context_set_maximum_image_size_limit) contextSetMaxSide;
    decltype(&heif_context_read_from_memory_without_copy) contextRead;
    decltype(&heif_context_get_number_of_top_level_images) contextCount;
    decltype(&heif_context_get_list_of_top_level_image_IDs) contextIds;
    decltype(&heif_context_get_image_handle) contextHandle;
    decltype(&heif_image_handle_release) handleRelease;
    decltype(&heif_image_handle_get_width) handleWidth;
    decltype(&heif_image_handle_get_height) handleHeight;
    decltype(&heif_image_handle_has_alpha_channel) handleHasAlpha;
    decltype(&heif_image_handle_get_list_of_metadata_block_IDs) metadataIds;
    decltype(&heif_image_handle_get_metadata_size) metadataSize;
    decltype(&heif_image_handle_get_metadata) metadata;
    decltype(&heif_decoding_options_alloc) optionsAlloc;
    decltype(&heif_decoding_options_free) optionsFree;
    decltype(&heif_decode_image) decode;
    decltype(&heif_image_release) imageRelease;
    decltype(&heif_image_get_primary_width) imageWidth;
    decltype(&heif_image_get_primary_height) imageHeight;
    decltype(&heif_image_is_premultiplied_alpha) imageIsPremultiplied;
    decltype(&heif_image_get_plane_readonly) imagePlane;

  private:
    Heif() {
        void* const handle = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) FailReading(std::string("HEIC needs ") + kLibrary + " (Debian: libheif1)");
        Find(handle, "heif_context_alloc", contextAlloc);
        Find(handle, "heif_context_free", contextFree);
        Find(handle, "heif_context_set_maximum_image_size_limit", contextSetMaxSide);
        Find(handle, "heif_context_read_from_memory_without_copy", contextRead);
        Find(handle, "heif_context_get_number_of_top_level_images", contextCount);
        Find(handle, "heif_context_get_list_of_top_level_image_IDs", contextIds);
        Find(handle, "heif_context_get_image_handle", contextHandle);
        Find(handle, "heif_image_handle_release", handleRelease);
        Find(handle, "heif_image_handle_get_width", handleWidth);
        Find(handle, "heif_image_handle_get_height", handleHeight);
        Find(handle, "heif_image_handle_has_alpha_channel", handleHasAlpha);
        Find(handle, "heif_image_handle_get_list_of_metadata_block_IDs", metadataIds);
        Find(handle, "heif_image_handle_get_metadata_size", metadataSize);
        Find(handle, "heif_image_handle_get_metadata", metadata);
        Find(handle, "heif_decoding_options_alloc", optionsAlloc);
        Find(handle, "heif_decoding_options_free", optionsFree);
        Find(handle, "heif_decode_image", decode);
        Find(handle, "heif_image_release", imageRelease);
        Find(handle, "heif_image_get_primary_width", imageWidth);
        Find(handle, "heif_image_get_primary_height", imageHeight);
        Find(handle, "heif_image_is_premultiplied_alpha", imageIsPremultiplied);
        Find(handle, "heif_image_get_plane_readonly", imagePlane);
    }

    template <typename Function>
    static void Find(void* handle, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(handle, name));
        if (function == nullptr) FailReading(std::string("HEIC: ") + kLibrary + " has no " + name);
    }
};

template <typename T>
using Owner = std::unique_ptr<T, void (*)(T*)>;
template <typename T>
using ConstOwner = std::unique_ptr<const T, void (*)(const T*)>;

void Check(const heif_error& error) {
    if (error.code == heif_error_Ok) return;
    std::string reason = error.message;
    while (reason.ends_with('\n')) reason.pop_back();
    FailReading("HEIC: " + reason);
}

// The resolution; the orientation is part of the picture's own transformations.
Resolution ResolutionOf(const heif_image_handle* picture) {
    constexpr std::size_t kOffsetBytes = 4;  // of the first byte-order mark, before the block
    const Heif& heif = Heif::Get();
    heif_item_id id = 0;
    if (heif.metadataIds(picture, "Exif", &id, 1) != 1) return {};
    std::vector<std::uint8_t> block(heif.metadataSize(picture, id));
    if (block.size() < kOffsetBytes || heif.metadata(picture, id, block.data()).code != heif_error_Ok)
        return {};
    const std::size_t start = kOffsetBytes + std::size_t{BigEndian(block, 0, kOffsetBytes)};
    return start < block.size() ? ParseExif(Bytes(block).subspan(start)).resolution : Resolution();
}

// The picture in colour, on white.
HostImage ImageOf(const heif_image* decoded, bool hasAlpha, bool isPremultiplied) {
    const Heif& heif = Heif::Get();
    int stride = 0;
    const std::uint8_t* from = heif.imagePlane(decoded, heif_channel_interleaved, &stride);
    if (from == nullptr) FailReading("HEIC: an unknown kind of pixel");
    HostImage image(heif.imageWidth(decoded), heif.imageHeight(decoded), 24);
    for (int y = 0; y < image.Height(); ++y, from += stride) {
        const std::uint8_t* pixel = from;
        std::uint8_t* to = image.TopRow(y);
        for (int x = 0; x < image.Width(); ++x, pixel += hasAlpha ? 4 : 3, to += 3) {
            const int alpha = hasAlpha ? pixel[3] : 255;
            for (int k = 0; k < 3; ++k) {
                const int inked = isPremultiplied ? pixel[k] : pixel[k] * alpha / 255;
                to[2 - k] = static_cast<std::uint8_t>(inked + 255 - alpha);
            }
        }
    }
    return image;
}

class HeifReader : public PictureReader {
  public:
    HeifReader(std::vector<std::uint8_t> file, std::int64_t most)
        : bytes(std::move(file)), maxPixels(most), context(heif.contextAlloc(), heif.contextFree) {
        heif.contextSetMaxSide(context.get(), static_cast<int>(kMaxSide));
        Check(heif.contextRead(context.get(), bytes.data(), bytes.size(), nullptr));
        ids.resize(static_cast<std::size_t>(heif.contextCount(context.get())));
        heif.contextIds(context.get(), ids.data(), static_cast<int>(ids.size()));
        if (ids.empty()) FailReading("HEIC: the file holds no picture");
    }

    std::optional<Picture> Next() override {
        if (next == ids.size()) return std::nullopt;
        heif_image_handle* found = nullptr;
        Check(heif.contextHandle(context.get(), ids[next++], &found));
        const ConstOwner<heif_image_handle> handle(found, heif.handleRelease);
        CheckSize(heif.handleWidth(found), heif.handleHeight(found), maxPixels);
        const bool hasAlpha = heif.handleHasAlpha(found) != 0;
        const Owner<heif_decoding_options> options(heif.optionsAlloc(), heif.optionsFree);
        options->strict_decoding = 1;
        heif_image* image = nullptr;
        Check(heif.decode(found, &image, heif_colorspace_RGB,
                          hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                          options.get()));
        const ConstOwner<heif_image> decoded(image, heif.imageRelease);
        CheckSize(heif.imageWidth(image), heif.imageHeight(image), maxPixels);
        return Picture{ImageOf(image, hasAlpha, hasAlpha && heif.imageIsPremultiplied(image) != 0),
                       ResolutionOf(found)};
    }

  private:
    const Heif& heif = Heif::Get();
    std::vector<std::uint8_t> bytes;
    std::int64_t maxPixels;
    Owner<heif_context> context;
    std::vector<heif_item_id> ids;
    std::size_t next = 0;
};

}  // namespace

std::unique_ptr<PictureReader> ReadHeifPages(std::vector<std::uint8_t> bytes, std::int64_t maxPixels) {
    return std::make_unique<HeifReader>(std::move(bytes), maxPixels);
}

}  // namespace host
