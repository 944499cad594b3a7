// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/stamp_drawing.h"

#include "media/preferences.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QStringList>

#include <algorithm>

namespace clipheave::photo {

namespace {

enum Corner { UpperLeft, UpperRight, LowerLeft, LowerRight, NoCorner };

/// The order of the titles.
Corner cornerOf(const QString& position) {
    const qsizetype index = media::stampPositions().indexOf(position);
    return index < 0 ? NoCorner : static_cast<Corner>(index);
}

/// The place that does not depend on the text.
QRectF coarseRectangle(QSize photo, Corner corner) {
    constexpr double kWidth = 400, kHeight = 50, kLeft = 50, kBottom = 30;
    const double right = photo.width() - kWidth, top = photo.height() - kHeight;
    switch (corner) {
    case LowerRight:
        return {right, kBottom, kWidth, kHeight};
    case UpperLeft:
        return {kLeft, top, kWidth, kHeight};
    case UpperRight:
        return {right, top, kWidth, kHeight};
    case LowerLeft:
    case NoCorner:
        break;
    }
    return {kLeft, kBottom, kWidth, kHeight};
}

QFont fontOf(const StampStyle& style) {
    QFont font(style.font);
    font.setPixelSize(std::max(style.fontSize, 1));
    return font;
}

} // namespace

QString stampText(const QString& recorded, const QString& layout) {
    const QStringList halves = recorded.split(u' ');
    if (halves.size() < 2)
        return recorded;
    const QString& date = halves[0];
    const QStringList parts = date.split(date.contains(u':') ? u':' : u'-');
    if (parts.size() != 3)
        return recorded;
    const auto joined = [&](int first, int second, int third) {
        return QStringLiteral("%1/%2/%3 %4")
            .arg(parts[first], parts[second], parts[third], halves[1]);
    };
    switch (media::stampDateFormats().indexOf(layout)) {
    case 0:
        return joined(1, 2, 0);
    case 1:
        return joined(2, 1, 0);
    case 2:
        return joined(0, 1, 2);
    default:
        return recorded;
    }
}

QRectF stampRectangle(QSize photo, QSizeF text, const QString& position) {
    constexpr double kMargin = 20, kLeft = 50, kBelow = 10, kAbove = 30;
    const Corner corner = cornerOf(position);
    const double w = text.width(), h = text.height();
    if (w <= 0 || h <= 0 || corner == NoCorner)
        return coarseRectangle(photo, corner);
    const bool isLeft = corner == UpperLeft || corner == LowerLeft;
    const bool isUpper = corner == UpperLeft || corner == UpperRight;
    return {isLeft ? kLeft : photo.width() - w - kMargin,
            isUpper ? photo.height() - h - kAbove : h + kBelow, w + kMargin, h + kMargin};
}

QSizeF stampTextSize(const QString& text, const StampStyle& style) {
    const QFontMetricsF metrics(fontOf(style));
    return {metrics.horizontalAdvance(text), metrics.height()};
}

void drawStamp(QPainter& painter, QSize photo, const QString& text, const StampStyle& style) {
    const QRectF place = stampRectangle(photo, stampTextSize(text, style), style.position);
    const QRectF fromTop(place.x(), photo.height() - place.y() - place.height(), place.width(),
                         place.height());
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setFont(fontOf(style));
    painter.setPen(style.color);
    painter.drawText(fromTop, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text);
    painter.restore();
}

} // namespace clipheave::photo
