// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/list_painting.h"

#include "media/media_kind.h"
#include "platform/foundation/paths.h"

#include <QTransform>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr qsizetype kLeastTail = 8;
constexpr double kTailPart = 0.45;
/// A longer "extension" is a sentence behind a dot.
constexpr qsizetype kLongestExtension = 10;

/// `kept` characters of the name around an ellipsis.
QString cutInTheMiddle(const QString& name, qsizetype kept, qsizetype leastTail) {
    const auto part = static_cast<qsizetype>(static_cast<double>(kept) * kTailPart);
    const qsizetype tail = std::min(kept, std::max(leastTail, part));
    qsizetype front = kept - tail;
    qsizetype back = name.size() - tail;
    if (front > 0 && name[front - 1].isHighSurrogate())
        --front;
    if (back < name.size() && name[back].isLowSurrogate())
        ++back;
    return name.left(front) + u'…' + name.mid(back);
}

} // namespace

QString elidedName(const QString& name, const QFontMetrics& metrics, int width) {
    if (metrics.horizontalAdvance(name) <= width)
        return name;
    const qsizetype extension = platform::pathExtension(name).size();
    const qsizetype leastTail =
        extension <= kLongestExtension ? std::max(kLeastTail, extension + 3) : kLeastTail;
    qsizetype fits = 0;
    for (qsizetype low = 1, high = name.size() - 1; low <= high;) {
        const qsizetype middle = (low + high) / 2;
        if (metrics.horizontalAdvance(cutInTheMiddle(name, middle, leastTail)) <= width) {
            fits = middle;
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    return cutInTheMiddle(name, fits, leastTail);
}

QBrush fillingBrush(const QPixmap& image, const QRectF& frame) {
    const QSizeF size = QSizeF(image.size()).scaled(frame.size(), Qt::KeepAspectRatioByExpanding);
    const double scale = size.width() / image.width();
    QBrush brush(image);
    brush.setTransform(QTransform::fromTranslate(frame.center().x() - size.width() / 2,
                                                 frame.center().y() - size.height() / 2)
                           .scale(scale, scale));
    return brush;
}

QPixmap kindPixmap(const QString& path, int side, double devicePixelRatio) {
    const Theme& theme = Theme::instance();
    const auto image = [&](const char* name, Token token) {
        return themePixmap(QString::fromLatin1(name), side, theme.color(token), devicePixelRatio);
    };
    if (media::MediaKind::isAudio(path))
        return image("music", Token::kAudio);
    if (media::MediaKind::isVideo(path))
        return image("film", Token::kVideo);
    if (media::MediaKind::isPhoto(path))
        return image("image", Token::kPhoto);
    return image("template", Token::text3);
}

} // namespace clipheave::app
