// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_decoding.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <memory>

namespace clipheave::platform {

namespace {

// The part of libheif's C interface that is used here. It has been the same since release 1.0 and
// is declared by hand because the library is found at run time: it brings a dozen codecs, and few
// covers are HEIF.
struct HeifContext;
struct HeifHandle;
struct HeifPixels;
struct HeifStatus {
    int code; ///< 0: none
    int subcode;
    const char* message; ///< belongs to the context
};
constexpr int kColorspaceRgb = 1;
constexpr int kChromaRgba = 11;
constexpr int kChannelInterleaved = 10;

struct HeifLibrary {
    HeifContext* (*allocate)() = nullptr;
    void (*freeContext)(HeifContext*) = nullptr;
    HeifStatus (*read)(HeifContext*, const void*, std::size_t, const void* options) = nullptr;
    HeifStatus (*mainImage)(HeifContext*, HeifHandle**) = nullptr;
    int (*width)(const HeifHandle*) = nullptr;
    int (*height)(const HeifHandle*) = nullptr;
    HeifStatus (*decode)(const HeifHandle*, HeifPixels**, int colorspace, int chroma,
                         const void* options) = nullptr;
    const std::uint8_t* (*plane)(const HeifPixels*, int channel, int* stride) = nullptr;
    int (*pixelWidth)(const HeifPixels*, int channel) = nullptr;
    int (*pixelHeight)(const HeifPixels*, int channel) = nullptr;
    void (*freeHandle)(const HeifHandle*) = nullptr;
    void (*freePixels)(const HeifPixels*) = nullptr;
};

template <typename Function>
bool findHeifFunction(void* library, const char* name, Function& function) {
    // POSIX: an object pointer of dlsym may be converted to a function pointer.
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool findHeifFunctions(void* library, HeifLibrary& found) {
    return findHeifFunction(library, "heif_context_alloc", found.allocate) &&
           findHeifFunction(library, "heif_context_free", found.freeContext) &&
           findHeifFunction(library, "heif_context_read_from_memory_without_copy", found.read) &&
           findHeifFunction(library, "heif_context_get_primary_image_handle", found.mainImage) &&
           findHeifFunction(library, "heif_image_handle_get_width", found.width) &&
           findHeifFunction(library, "heif_image_handle_get_height", found.height) &&
           findHeifFunction(library, "heif_decode_image", found.decode) &&
           findHeifFunction(library, "heif_image_get_plane_readonly", found.plane) &&
           findHeifFunction(library, "heif_image_get_width", found.pixelWidth) &&
           findHeifFunction(library, "heif_image_get_height", found.pixelHeight) &&
           findHeifFunction(library, "heif_image_handle_release", found.freeHandle) &&
           findHeifFunction(library, "heif_image_release", found.freePixels);
}

/// Null when it is missing. Never closed: the codecs that it loads cannot be unloaded safely.
const HeifLibrary* heifLibrary() {
    static const HeifLibrary* const loaded = []() -> const HeifLibrary* {
        static HeifLibrary found;
        void* library = dlopen("libheif.so.1", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        return library && findHeifFunctions(library, found) ? &found : nullptr;
    }();
    return loaded;
}

QImage imageOfPixels(const HeifLibrary& heif, const HeifPixels* pixels) {
    int stride = 0;
    const std::uint8_t* plane = heif.plane(pixels, kChannelInterleaved, &stride);
    const QSize size(heif.pixelWidth(pixels, kChannelInterleaved),
                     heif.pixelHeight(pixels, kChannelInterleaved));
    if (!plane || size.isEmpty() || stride < size.width() * 4)
        return {};
    const QImage image(plane, size.width(), size.height(), stride, QImage::Format_RGBA8888);
    return image.copy(); // the pixels belong to the library
}

/// Returns the reason for a status that is no success.
Message reasonOf(const HeifStatus& status) {
    return Message(QString::fromUtf8(status.message ? status.message : "unknown failure"));
}

} // namespace

Result<QImage> decodedHeif(const QByteArray& bytes, MessageCode operation, const QString& path) {
    const HeifLibrary* heif = heifLibrary();
    if (!heif)
        return failure(ErrorCode::NotSupported, operation, path, kHeifLibraryMissing);
    const auto fault = [&](const HeifStatus& status) {
        return failure(ErrorCode::InvalidData, operation, path, reasonOf(status));
    };
    const std::unique_ptr<HeifContext, decltype(heif->freeContext)> context(heif->allocate(),
                                                                            heif->freeContext);
    const auto size = static_cast<std::size_t>(bytes.size());
    if (const auto read = heif->read(context.get(), bytes.constData(), size, nullptr); read.code)
        return fault(read);
    HeifHandle* found = nullptr;
    if (const auto status = heif->mainImage(context.get(), &found); status.code)
        return fault(status);
    const std::unique_ptr<HeifHandle, decltype(heif->freeHandle)> handle(found, heif->freeHandle);
    if (hasTooManyPixels({heif->width(found), heif->height(found)}))
        return failure(ErrorCode::LimitExceeded, operation, path, kTooManyPixels);
    HeifPixels* decoded = nullptr;
    const auto status = heif->decode(found, &decoded, kColorspaceRgb, kChromaRgba, nullptr);
    if (status.code)
        return fault(status);
    const std::unique_ptr<HeifPixels, decltype(heif->freePixels)> pixels(decoded, heif->freePixels);
    QImage image = imageOfPixels(*heif, decoded);
    if (image.isNull())
        return failure(ErrorCode::InvalidData, operation, path, kNoImage);
    return image;
}

} // namespace clipheave::platform
