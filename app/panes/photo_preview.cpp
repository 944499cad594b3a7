// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/photo_preview.h"

#include "app/list/thumbnail_service.h"
#include "app/theme/theme.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace clipheave::app {

namespace {

constexpr int kPreviewRadius = 8, kPlaceholderSide = 40;
/// Few sizes, so that a photo is not decoded again with every px that the pane grows by.
constexpr int kSizeStep = 256; // device pixels

} // namespace

PhotoPreview::PhotoPreview(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleName(tr("Preview"));
    connect(&ThumbnailService::shared(), &ThumbnailService::imagesReady, this,
            qOverload<>(&QWidget::update));
    connect(&Theme::instance(), &Theme::changed, this, qOverload<>(&QWidget::update));
    connect(this, &QObject::destroyed, &ThumbnailService::shared(),
            [](QObject* gone) { ThumbnailService::shared().cancel(gone); });
}

void PhotoPreview::setItem(const media::ItemPointer& item) {
    m_item = item;
    ask();
    update();
}

void PhotoPreview::setPreviewWidth(int width) {
    setFixedSize(width, width * 2 / 3);
}

ThumbnailShape PhotoPreview::shape() const {
    const double longest = std::max(width(), height()) * devicePixelRatioF();
    const int side = static_cast<int>(std::ceil(longest / kSizeStep)) * kSizeStep;
    return {{side, side}, ThumbnailShape::Fit, 0};
}

void PhotoPreview::ask() {
    QList<ThumbnailRequest> wanted;
    if (m_item && !size().isEmpty())
        wanted.append({m_item, shape()});
    ThumbnailService::shared().request(this, wanted);
}

void PhotoPreview::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    ask();
}

void PhotoPreview::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const Theme& theme = Theme::instance();
    QPainterPath frame;
    frame.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kPreviewRadius,
                         kPreviewRadius);
    painter.fillPath(frame, theme.color(Token::well));
    QPixmap image = m_item ? ThumbnailService::shared().image(*m_item, shape()) : QPixmap();
    if (image.isNull() && m_item)
        image = ThumbnailService::shared().image(*m_item, ThumbnailShape::ofTile());
    if (image.isNull()) {
        const int side = kPlaceholderSide;
        painter.drawPixmap(QPoint((width() - side) / 2, (height() - side) / 2),
                           themePixmap(QStringLiteral("image"), side,
                                       Theme::colorOf(Token::text3, true), devicePixelRatioF()));
    } else {
        painter.setClipPath(frame);
        const QSizeF fitted = QSizeF(image.size()).scaled(size(), Qt::KeepAspectRatio);
        painter.drawPixmap(
            QRectF(QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2),
                   fitted),
            image, QRectF(image.rect()));
        painter.setClipping(false);
    }
    painter.setPen(QPen(theme.color(Token::line2), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(frame);
}

} // namespace clipheave::app
