// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_maker.h"

#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_reader.h"
#include "platform/image/photo_decoding.h"
#include "platform/media/model/media_engine.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace clipheave::app {

namespace {

constexpr qsizetype kMostArtworkBytes = 64 << 20;
/// A video is shown by what it holds at a tenth of its length, within the first minute.
constexpr double kPartOfVideo = 0.1;
constexpr double kLatestVideoSecond = 60;

QImage scaledWithin(const QImage& original, int side) {
    if (original.isNull() || (original.width() <= side && original.height() <= side))
        return original;
    return original.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QImage decodeVideo(const ThumbnailSource& source, int side) {
    const auto engine = platform::mediaEngine();
    if (!engine)
        return {};
    const double second = std::isfinite(source.seconds)
                              ? std::clamp(source.seconds * kPartOfVideo, 0.0, kLatestVideoSecond)
                              : 0;
    const auto keyframe = (*engine)->keyframeAt(source.path, second, side);
    if (!keyframe)
        return {};
    const QImage image(reinterpret_cast<const uchar*>(keyframe->rgb32.constData()), keyframe->width,
                       keyframe->height, keyframe->width * 4, QImage::Format_RGB32);
    return image.copy(); // the bytes belong to the keyframe
}

/// The side of the image that a shape is made of: one of the thumbnail folder, or more.
int sideOf(const ThumbnailShape& shape) {
    const int longest = std::max(shape.size.width(), shape.size.height());
    if (shape.mode == ThumbnailShape::Fit && longest > ThumbnailCache::kLargeSide)
        return longest;
    return longest <= ThumbnailCache::kNormalSide ? ThumbnailCache::kNormalSide
                                                  : ThumbnailCache::kLargeSide;
}

/// The image of the file within `side` pixels, from the thumbnail folder or made; `store` puts it
/// there then.
QImage imageOfFile(const ThumbnailSource& source, int side, const ThumbnailCache& cache,
                   std::function<void()>& store) {
    const bool isVideoFile = media::MediaKind::isVideo(source.path);
    if (!isVideoFile && !media::MediaKind::isPhoto(source.path))
        return {};
    auto reader = platform::FileReader::open(source.path);
    if (!reader)
        return {};
    const auto attributes =
        platform::NSFileManager::defaultManager().attributesOfOpenFile(reader->fd(), source.path);
    if (!attributes)
        return {};
    const auto decoded = [&] {
        return isVideoFile ? decodeVideo(source, side) : platform::photoThumbnail(*reader, side);
    };
    if (side > ThumbnailCache::kLargeSide)
        return decoded();
    const std::int64_t modified = attributes->NSFileModificationDate.toSecsSinceEpoch();
    if (QImage stored = cache.find(source.path, modified, side); !stored.isNull())
        return stored;
    QImage original = scaledWithin(decoded(), side);
    store = [&cache, path = source.path, modified, side, original] {
        cache.store(path, modified, side, original);
    };
    return original;
}

QImage rounded(const QImage& original, int radius) {
    QImage target(original.size(), QImage::Format_ARGB32_Premultiplied);
    target.fill(Qt::transparent);
    QPainter painter(&target);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QBrush(original));
    painter.drawRoundedRect(target.rect(), radius, radius);
    return target;
}

QImage shaped(const QImage& original, const ThumbnailShape& shape) {
    if (original.isNull() || shape.size.isEmpty())
        return {};
    QImage scaled = original;
    if (shape.mode == ThumbnailShape::Fill) {
        scaled =
            original.scaled(shape.size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        scaled = scaled.copy((scaled.width() - shape.size.width()) / 2,
                             (scaled.height() - shape.size.height()) / 2, shape.size.width(),
                             shape.size.height());
        if (shape.radius > 0)
            return rounded(scaled, shape.radius);
    } else if (original.width() > shape.size.width() || original.height() > shape.size.height()) {
        scaled = original.scaled(shape.size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    // What the screen takes without another conversion.
    return scaled.convertToFormat(scaled.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                           : QImage::Format_RGB32);
}

} // namespace

ThumbnailSource ThumbnailSource::of(const media::IKImageItem& item) {
    return {item.filePath, item.fileImage, item.fileduration};
}

MadeThumbnail makeThumbnail(const ThumbnailSource& source, const ThumbnailShape& shape,
                            const ThumbnailCache& cache) {
    const int longest = std::max(shape.size.width(), shape.size.height());
    if (!source.artwork.isNull() &&
        source.artwork.byteCount() <= static_cast<std::uint64_t>(kMostArtworkBytes)) {
        const QImage original = platform::imageThumbnail(source.artwork.bytes(), longest);
        if (!original.isNull())
            return {shaped(original, shape)};
    }
    MadeThumbnail made;
    made.image = shaped(imageOfFile(source, sideOf(shape), cache, made.store), shape);
    return made;
}

} // namespace clipheave::app
