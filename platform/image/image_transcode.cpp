// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/image_transcode.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/messages.h"

#include <QBuffer>
#include <QImage>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostArtworkBytes = 64u << 20;
constexpr int kJpegQualityOfArtwork = 95;

tl::unexpected<Error> tooManyPixels(const QString& path) {
    return failure(ErrorCode::LimitExceeded, kReadImage, path, kTooManyPixels);
}

} // namespace

Result<EncodedImage> imageForArtwork(const QString& path) {
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    if (reader->size() > kMostArtworkBytes)
        return failure(ErrorCode::LimitExceeded, kReadImage, path, kImageFileTooLarge);
    const auto bytes = reader->read(0, reader->size());
    if (!bytes)
        return tl::unexpected(bytes.error());
    EncodedImage original = EncodedImage::fromBytes(*bytes);
    // These are written as they are; players that show them must decode them all the same.
    if (hasTooManyPixels(original.size()))
        return tooManyPixels(path);
    if (original.format() == u"jpeg" || original.format() == u"png")
        return original;
    const auto image = decodedArtwork(*bytes, kReadImage, path);
    if (!image)
        return tl::unexpected(image.error());
    // Photos of HEIC are lossy already and would be large as PNG.
    const bool isHeif = original.format() == u"heif";
    QBuffer output;
    output.open(QIODevice::WriteOnly);
    if (!image->save(&output, isHeif ? "JPEG" : "PNG", isHeif ? kJpegQualityOfArtwork : -1))
        return failure(ErrorCode::Io, kEncodeImage, path);
    return EncodedImage::fromBytes(output.data());
}

} // namespace clipheave::platform
