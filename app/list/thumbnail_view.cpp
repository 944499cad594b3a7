// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/thumbnail_view.h"

#include "app/list/list_painting.h"
#include "app/list/thumbnail_service.h"
#include "app/theme/theme.h"

#include <QPainter>

#include <utility>

namespace clipheave::app {

namespace {

constexpr double kViewRadius = 6;
constexpr int kKindImage = 24;

} // namespace

ThumbnailView::ThumbnailView(QSize size, QWidget* parent)
    : QWidget(parent), m_service(ThumbnailService::shared()) {
    setFixedSize(size);
    connect(&m_service, &ThumbnailService::imagesReady, this, qOverload<>(&QWidget::update));
    connect(&Theme::instance(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

ThumbnailView::~ThumbnailView() {
    m_service.cancel(this);
}

void ThumbnailView::setItem(media::ItemPointer item) {
    m_item = std::move(item);
    m_service.request(this, m_item ? QList<ThumbnailRequest>{{m_item, ThumbnailShape::ofTile()}}
                                   : QList<ThumbnailRequest>());
    update();
}

void ThumbnailView::paintEvent(QPaintEvent*) {
    if (!m_item)
        return;
    const Theme& theme = Theme::instance();
    const QPixmap image = m_service.image(*m_item, ThumbnailShape::ofTile());
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
    painter.setBrush(image.isNull() ? QBrush(theme.color(Token::bg3))
                                    : fillingBrush(image, rect()));
    painter.drawRoundedRect(rect(), kViewRadius, kViewRadius);
    if (image.isNull())
        painter.drawPixmap((width() - kKindImage) / 2, (height() - kKindImage) / 2,
                           kindPixmap(m_item->filePath, kKindImage, devicePixelRatioF()));
}

} // namespace clipheave::app
