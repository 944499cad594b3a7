// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_maker.h"

#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_reader.h"
#include "platform/media/model/media_engine.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace clipheave::app {

namespace {

/// Pictures of more pixels are not opened: decoding one would take the memory of a film.
constexpr qint64 kMostPixelsDecoded = 200'000'000;
constexpr qsizetype kMostArtworkBytes = 64 << 20;
/// A film is shown by what it holds at a tenth of its length, within the first minute.
constexpr double kPartOfFilm = 0.1;
constexpr double kLatestFilmSecond = 60;

/// Formats whose decoders are meant for files of unknown origin.
bool isDecodedFormat(const QByteArray& format) {
    return format == "jpeg" || format == "png" || format == "gif" || format == "bmp" ||
           format == "webp" || format == "tiff" || format == "tga" || format == "ico";
}

/// Decodes at about `side` pixels, upright; the whole picture, never enlarged.
QImage readScaled(QIODevice& device, int side) {
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    if (!isDecodedFormat(reader.format()))
        return {};
    const QSize size = reader.size();
    if (size.isValid()) {
        if (qint64{size.width()} * size.height() > kMostPixelsDecoded)
            return {};
        // Twice the size, for a JPEG is reduced in steps; the rest is done smoothly.
        if (std::max(size.width(), size.height()) > 2 * side)
            reader.setScaledSize(
                size.scaled(2 * side, 2 * side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    }
    reader.setAutoTransform(true);
    return reader.read();
}

QImage scaledWithin(const QImage& picture, int side) {
    if (picture.isNull() || (picture.width() <= side && picture.height() <= side))
        return picture;
    return picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage decodePhoto(platform::FileReader& reader, int side) {
    QFile file;
    if (!file.open(reader.fd(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
        return {};
    return readScaled(file, side);
}

QImage decodeFilm(const ThumbnailSource& source, int side) {
    const auto engine = platform::mediaEngine();
    if (!engine)
        return {};
    const double second = std::isfinite(source.seconds)
                              ? std::clamp(source.seconds * kPartOfFilm, 0.0, kLatestFilmSecond)
                              : 0;
    const auto picture = (*engine)->pictureAt(source.path, second, side);
    if (!picture)
        return {};
    const QImage image(reinterpret_cast<const uchar*>(picture->rgb32.constData()), picture->width,
                       picture->height, picture->width * 4, QImage::Format_RGB32);
    return image.copy(); // its own bytes
}

/// The picture of the file within `side` pixels, from the thumbnail folder or made and put there.
QImage pictureOfFile(const ThumbnailSource& source, int side, const ThumbnailCache& cache) {
    const bool isFilm = media::MediaKind::isVideo(source.path);
    if (!isFilm && !media::MediaKind::isPhoto(source.path))
        return {};
    auto reader = platform::FileReader::open(source.path);
    if (!reader)
        return {};
    const auto attributes =
        platform::NSFileManager::defaultManager().attributesOfOpenFile(reader->fd(), source.path);
    if (!attributes)
        return {};
    const std::int64_t modified = attributes->NSFileModificationDate.toSecsSinceEpoch();
    if (const QImage stored = cache.find(source.path, modified, side); !stored.isNull())
        return stored;
    const QImage picture =
        scaledWithin(isFilm ? decodeFilm(source, side) : decodePhoto(*reader, side), side);
    cache.store(source.path, modified, side, picture);
    return picture;
}

QImage rounded(const QImage& picture, int radius) {
    QImage target(picture.size(), QImage::Format_ARGB32_Premultiplied);
    target.fill(Qt::transparent);
    QPainter painter(&target);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QBrush(picture));
    painter.drawRoundedRect(target.rect(), radius, radius);
    return target;
}

QImage shaped(const QImage& picture, const ThumbnailShape& shape) {
    if (picture.isNull() || shape.size.isEmpty())
        return {};
    QImage scaled = picture;
    if (shape.mode == ThumbnailShape::Fill) {
        scaled =
            picture.scaled(shape.size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        scaled = scaled.copy((scaled.width() - shape.size.width()) / 2,
                             (scaled.height() - shape.size.height()) / 2, shape.size.width(),
                             shape.size.height());
        if (shape.radius > 0)
            return rounded(scaled, shape.radius);
    } else if (picture.width() > shape.size.width() || picture.height() > shape.size.height()) {
        scaled = picture.scaled(shape.size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    // What the screen takes without another conversion.
    return scaled.convertToFormat(scaled.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                           : QImage::Format_RGB32);
}

} // namespace

ThumbnailSource ThumbnailSource::of(const media::IKImageItem& item) {
    return {item.filePath, item.fileImage, item.fileduration};
}

QImage makeThumbnail(const ThumbnailSource& source, const ThumbnailShape& shape,
                     const ThumbnailCache& cache) {
    const int longest = std::max(shape.size.width(), shape.size.height());
    if (!source.artwork.isNull() &&
        source.artwork.byteCount() <= static_cast<std::uint64_t>(kMostArtworkBytes)) {
        QByteArray bytes = source.artwork.bytes();
        QBuffer buffer(&bytes);
        if (buffer.open(QIODevice::ReadOnly))
            if (const QImage picture = readScaled(buffer, longest); !picture.isNull())
                return shaped(picture, shape);
    }
    const int side = longest <= ThumbnailCache::kNormalSide ? ThumbnailCache::kNormalSide
                                                            : ThumbnailCache::kLargeSide;
    return shaped(pictureOfFile(source, side, cache), shape);
}

} // namespace clipheave::app
