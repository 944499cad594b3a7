// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_decoding.h"

#include "platform/image/artwork_decoding.h"
#include "platform/image/cmyk_jpeg.h"
#include "platform/image/heif_decoding.h"
#include "platform/image/heif_reader.h"
#include "platform/image/messages.h"
#include "platform/image/photo_colours.h"
#include "platform/image/raw_decoding.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QTransform>

#include <algorithm>
#include <array>
#include <dlfcn.h>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kHeadBytes = 64;
constexpr int kMostJpegShrinking = 2; // what even a thumbnail of a huge photo is shrunk by

/// Formats whose decoders are meant for files of unknown origin.
bool isDecodedFormat(const QByteArray& format) {
    static constexpr std::array kFormats{"jpeg", "png", "gif", "bmp",  "webp", "tiff",
                                         "tga",  "ico", "cur", "icns", "pbm",  "pgm",
                                         "ppm",  "xbm", "xpm", "wbmp"};
    return std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
}

/// An image as its file holds it.
struct StoredImage {
    QImage image;
    QByteArray profile;
    bool isUpright = false; ///< the decoder has seen to it
};

/// Source: Exif 2.3, 4.6.4 A, Orientation: where the first row and column of the stored image are.
QImage uprightImage(const QImage& image, int orientation) {
    static constexpr struct {
        bool mirrors; ///< left and right, before the rotation
        int degrees;  ///< to the right
    } kSteps[] = {{false, 0},  {true, 0},   {false, 180}, {true, 180},
                  {true, 270}, {false, 90}, {true, 90},   {false, 270}};
    if (orientation < 2 || orientation > 8)
        return image;
    const auto& [mirrors, degrees] = kSteps[orientation - 1];
    const QImage mirrored = mirrors ? image.mirrored(true, false) : image;
    return degrees == 0 ? mirrored : mirrored.transformed(QTransform().rotate(degrees));
}

tl::unexpected<Error> photoFailure(ErrorCode code, const FileReader& reader,
                                   const Message& reason) {
    return failure(code, kReadPhoto, reader.path(), reason);
}

Result<QByteArray> allBytes(FileReader& reader) {
    return reader.read(0, reader.size());
}

Result<StoredImage> readHeifImage(FileReader& reader) {
    const auto bytes = allBytes(reader);
    if (!bytes)
        return tl::unexpected(bytes.error());
    auto image = decodedHeif(*bytes, kReadPhoto, reader.path());
    if (!image)
        return tl::unexpected(image.error());
    const auto facts = readHeif(reader);
    return StoredImage{*image, facts ? facts->iccProfile : QByteArray(), true};
}

/// By itself libtiff, which Qt's reader uses, writes each unknown tag to standard error.
void silenceTiffLibrary() {
    static const bool isSilent = [] {
        void* library = dlopen("libtiff.so.6", RTLD_NOW | RTLD_LOCAL);
        using SetHandler = void* (*)(void*);
        for (const char* setter : {"TIFFSetWarningHandler", "TIFFSetErrorHandler"})
            if (auto* set =
                    library ? reinterpret_cast<SetHandler>(dlsym(library, setter)) : nullptr)
                set(nullptr);
        return library != nullptr;
    }();
    static_cast<void>(isSilent);
}

/// Opens the file for Qt; it stays the reader's.
bool openForQt(QFile& file, const FileReader& reader) {
    return file.open(reader.fd(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle) &&
           file.seek(0);
}

/// Returns whether the image data of a JPEG file goes on to its end: the decoder takes what is
/// there and leaves the rest grey. Source: ITU-T T.81, B.1.1.2 to B.1.1.4.
bool isWholeJpeg(const QByteArray& jpeg) {
    const ByteView bytes(jpeg);
    std::uint64_t at = 2;
    while (bytes.u8(at) == 0xff && bytes.be16(at) != 0xffda)
        at += bytes.be16(at) == 0xffff ? 1 : 2u + bytes.be16(at + 2).value_or(0);
    return jpeg.lastIndexOf("\xff\xd9") > static_cast<qsizetype>(at);
}

Result<void> checkJpeg(FileReader& reader) {
    const auto bytes = allBytes(reader);
    if (!bytes)
        return tl::unexpected(bytes.error());
    if (!isWholeJpeg(*bytes))
        return photoFailure(ErrorCode::Truncated, reader, {});
    return {};
}

Result<StoredImage> readQtImage(FileReader& reader) {
    allowLargeImages();
    QFile file;
    if (!openForQt(file, reader))
        return photoFailure(ErrorCode::Io, reader, file.errorString());
    QImageReader decoder(&file);
    decoder.setDecideFormatFromContent(true);
    const bool isJpeg = decoder.format() == "jpeg";
    if (!isDecodedFormat(decoder.format()))
        return photoFailure(ErrorCode::NotSupported, reader, kNoDecoder);
    if (hasTooManyPixels(decoder.size()))
        return photoFailure(ErrorCode::LimitExceeded, reader, kTooManyPixels);
    if (isJpeg)
        if (const auto whole = checkJpeg(reader); !whole)
            return tl::unexpected(whole.error());
    StoredImage stored{decoder.read(), {}, false};
    if (stored.image.isNull())
        return photoFailure(ErrorCode::InvalidData, reader, decoder.errorString());
    stored.profile = stored.image.colorSpace().iccProfile();
    if (isJpeg && isCmykProfile(stored.profile))
        if (const auto bytes = allBytes(reader))
            if (QImage inks = cmykJpegInSrgb(*bytes, stored.profile); !inks.isNull())
                stored = {std::move(inks), {}, false};
    return stored;
}

/// A TIFF file may be a photo as well as a raw one, whose first image is then a small one.
bool isRawRather(const RawPhoto& raw, FileReader& reader) {
    QFile file;
    if (!openForQt(file, reader))
        return true;
    const QSize shown = QImageReader(&file, "tiff").size();
    const auto pixels = [](QSize size) { return qint64{size.width()} * size.height(); };
    return shown.isEmpty() || pixels(raw.size()) > pixels(shown) * 3 / 2;
}

Result<StoredImage> readStored(FileReader& reader) {
    const ByteView head = reader.viewUpTo(0, kHeadBytes);
    const bool heif = isHeif(head);
    if (mayBeRaw(head)) {
        silenceTiffLibrary(); // TIFF is among them
        auto raw = RawPhoto::open(reader);
        if (raw && isRawRather(*raw, reader)) {
            const auto image = raw->image();
            return image ? Result<StoredImage>(StoredImage{*image, {}, true})
                         : tl::unexpected(image.error());
        }
        if (!raw && raw.error().code == ErrorCode::LimitExceeded)
            return tl::unexpected(raw.error());
    }
    return heif ? readHeifImage(reader) : readQtImage(reader);
}

/// Decodes at a fraction of the size where the format can, upright.
QImage readScaled(QIODevice& device, int side) {
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    if (!isDecodedFormat(reader.format()))
        return {};
    const QSize size = reader.size();
    const bool isJpeg = reader.format() == "jpeg"; // shrinks while it decodes
    if (hasTooManyPixels(isJpeg ? size / kMostJpegShrinking : size))
        return {};
    allowLargeImages();
    if (isJpeg && !size.isEmpty())
        reader.setScaledSize(jpegFraction(size, side));
    else if (std::max(size.width(), size.height()) > 2 * side) // smooth scaling does the rest
        reader.setScaledSize(
            size.scaled(2 * side, 2 * side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    reader.setAutoTransform(true);
    return reader.read();
}

QImage heifThumbnailOf(const QByteArray& bytes, int side) {
    if (QImage held = heifThumbnail(bytes, side); !held.isNull())
        return held;
    return decodedHeif(bytes, kReadPhoto).value_or(QImage());
}

/// Null when the file is no raw photo, or none with a preview that is worth showing.
QImage rawThumbnail(FileReader& reader, int side) {
    auto raw = RawPhoto::open(reader);
    if (!raw || !isRawRather(*raw, reader))
        return {};
    const QImage preview = raw->preview(side);
    if (std::max(preview.width(), preview.height()) >= side)
        return preview;
    const auto image = raw->image();
    return image ? *image : preview;
}

} // namespace

Result<QImage> decodedPhoto(FileReader& reader, const PhotoHints& hints) {
    auto stored = readStored(reader);
    if (!stored)
        return tl::unexpected(stored.error());
    QByteArray profile = stored->profile;
    if (profile.isEmpty() && hints.isAdobeRgb)
        profile = adobeRgbProfile();
    const QImage opaque = opaqueInSrgb(std::move(stored->image), profile);
    if (opaque.isNull())
        return photoFailure(ErrorCode::LimitExceeded, reader, kTooManyPixels);
    return stored->isUpright ? opaque : uprightImage(opaque, hints.orientation);
}

QImage photoThumbnail(FileReader& reader, int side) {
    const ByteView head = reader.viewUpTo(0, kHeadBytes);
    const bool heif = isHeif(head);
    if (mayBeRaw(head)) {
        silenceTiffLibrary();
        if (QImage raw = rawThumbnail(reader, side); !raw.isNull())
            return raw;
    }
    if (heif) {
        const auto bytes = allBytes(reader);
        return bytes ? heifThumbnailOf(*bytes, side) : QImage();
    }
    QFile file;
    return openForQt(file, reader) ? readScaled(file, side) : QImage();
}

QImage imageThumbnail(const QByteArray& bytes, int side) {
    if (isHeif(bytes))
        return heifThumbnailOf(bytes, side);
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return readScaled(buffer, side);
}

} // namespace clipheave::platform
