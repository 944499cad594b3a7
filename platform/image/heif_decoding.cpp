// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_decoding.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
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
    int (*thumbnailIds)(const HeifHandle*, std::uint32_t* ids, int count) = nullptr;
    HeifStatus (*thumbnail)(const HeifHandle* mainImage, std::uint32_t id, HeifHandle**) = nullptr;
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
           findHeifFunction(library, "heif_image_handle_get_list_of_thumbnail_IDs",
                            found.thumbnailIds) &&
           findHeifFunction(library, "heif_image_handle_get_thumbnail", found.thumbnail) &&
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

using HeifFile = std::unique_ptr<HeifContext, decltype(HeifLibrary::freeContext)>;
using HeifImage = std::unique_ptr<HeifHandle, decltype(HeifLibrary::freeHandle)>;

/// A file that is read, with its main image; the bytes stay the caller's.
struct OpenHeif {
    HeifFile file;
    HeifImage image;
    HeifStatus status{}; ///< of the step that failed
};

OpenHeif openHeif(const HeifLibrary& heif, const QByteArray& bytes) {
    OpenHeif open{HeifFile(heif.allocate(), heif.freeContext), HeifImage(nullptr, heif.freeHandle)};
    const auto size = static_cast<std::size_t>(bytes.size());
    open.status = heif.read(open.file.get(), bytes.constData(), size, nullptr);
    HeifHandle* found = nullptr;
    if (open.status.code == 0)
        open.status = heif.mainImage(open.file.get(), &found);
    open.image.reset(found);
    return open;
}

QSize sizeOf(const HeifLibrary& heif, const HeifImage& image) {
    return {heif.width(image.get()), heif.height(image.get())};
}

/// Null when it fails, with the status.
QImage decode(const HeifLibrary& heif, const HeifImage& image, HeifStatus& status) {
    HeifPixels* decoded = nullptr;
    status = heif.decode(image.get(), &decoded, kColorspaceRgb, kChromaRgba, nullptr);
    const std::unique_ptr<HeifPixels, decltype(heif.freePixels)> pixels(decoded, heif.freePixels);
    return status.code == 0 ? imageOfPixels(heif, decoded) : QImage();
}

/// The same but for rounding: a thumbnail has few pixels.
bool haveSameAspectRatio(QSize small, QSize large) {
    constexpr double kMostDifference = 0.03;
    const double ratio =
        double(small.width()) * large.height() / (double(small.height()) * large.width());
    return std::abs(ratio - 1) <= kMostDifference;
}

} // namespace

Result<QImage> decodedHeif(const QByteArray& bytes, MessageCode operation, const QString& path) {
    const HeifLibrary* heif = heifLibrary();
    if (!heif)
        return failure(ErrorCode::NotSupported, operation, path, kHeifLibraryMissing);
    const auto fault = [&](const HeifStatus& status) {
        return failure(ErrorCode::InvalidData, operation, path, reasonOf(status));
    };
    OpenHeif open = openHeif(*heif, bytes);
    if (open.status.code)
        return fault(open.status);
    if (hasTooManyPixels(sizeOf(*heif, open.image)))
        return failure(ErrorCode::LimitExceeded, operation, path, kTooManyPixels);
    QImage image = decode(*heif, open.image, open.status);
    if (open.status.code)
        return fault(open.status);
    if (image.isNull())
        return failure(ErrorCode::InvalidData, operation, path, kNoImage);
    return image;
}

QImage heifThumbnail(const QByteArray& bytes, int side) {
    const HeifLibrary* heif = heifLibrary();
    if (!heif)
        return {};
    OpenHeif open = openHeif(*heif, bytes);
    std::uint32_t id = 0;
    HeifHandle* found = nullptr;
    if (open.status.code || heif->thumbnailIds(open.image.get(), &id, 1) != 1 ||
        heif->thumbnail(open.image.get(), id, &found).code)
        return {};
    const HeifImage thumbnail(found, heif->freeHandle);
    const QSize size = sizeOf(*heif, thumbnail);
    if (std::max(size.width(), size.height()) < side || hasTooManyPixels(size) || size.isEmpty() ||
        !haveSameAspectRatio(size, sizeOf(*heif, open.image)))
        return {};
    return decode(*heif, thumbnail, open.status);
}

} // namespace clipheave::platform
