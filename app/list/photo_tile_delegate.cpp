// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/photo_tile_delegate.h"

#include "app/list/list_painting.h"
#include "app/list/media_list_model.h"
#include "app/list/photo_grid.h"
#include "app/theme/theme.h"
#include "app/widgets/fact_label.h"
#include "media/media_kind.h"
#include "platform/foundation/paths.h"

#include <QItemSelectionModel>
#include <QPainter>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kAboveTile = 10;
constexpr int kTileInset = 7; // outline and padding
constexpr double kTileRadius = 8;
constexpr int kImageHeight = 116;
constexpr double kImageRadius = 5;
constexpr int kTextGap = 7;
constexpr int kLineHeight = 16;
constexpr int kTextInset = 2;
constexpr int kPinSide = 14;
constexpr int kKindSide = 32;
constexpr int kBadgeInset = 6, kBadgeHeight = 20, kBadgePadding = 4;
constexpr double kBadgeRadius = 4, kBadgeOpacity = 0.72;

bool isRawPhoto(const QString& path) {
    return media::MediaKind::GetImageType(platform::pathExtension(path).toLatin1().constData()) >=
           0;
}

void paintBadge(QPainter& painter, const QRect& frame, const QString& text) {
    const Theme& theme = Theme::instance();
    QFont font = theme.font(FontRole::Caption);
    font.setPointSizeF(font.pointSizeF() * 10.5 / 11);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    const int width =
        std::max(kBadgeHeight, painter.fontMetrics().horizontalAdvance(text) + 2 * kBadgePadding);
    const QRect badge(frame.right() + 1 - kBadgeInset - width, frame.top() + kBadgeInset, width,
                      kBadgeHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(Token::well, kBadgeOpacity));
    painter.drawRoundedRect(badge, kBadgeRadius, kBadgeRadius);
    painter.setPen(Theme::colorOf(Token::name, true)); // on the dark of the well, in both themes
    painter.drawText(badge, Qt::AlignCenter, text);
}

} // namespace

PhotoTileDelegate::PhotoTileDelegate(PhotoGrid* view) : QStyledItemDelegate(view), m_view(view) {
}

QSize PhotoTileDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return m_view->gridSize();
}

QString PhotoTileDelegate::detailOf(const media::IKImageItem& item) {
    if (item.filePixWidth > 0 && item.filepixHeigh > 0)
        return QStringLiteral("%1 x %2").arg(item.filePixWidth).arg(item.filepixHeigh);
    return item.fileduratStr.isEmpty() ? item.fileSize : item.fileduratStr;
}

void PhotoTileDelegate::paintImage(QPainter& painter, const QRect& frame,
                                   const media::IKImageItem& item) const {
    const Theme& theme = Theme::instance();
    ThumbnailService* service = m_view->thumbnailService();
    const QPixmap image =
        service != nullptr ? service->image(item, ThumbnailShape::ofTile()) : QPixmap();
    painter.setPen(Qt::NoPen);
    painter.setBrush(image.isNull() ? QBrush(theme.color(Token::bg3)) : fillingBrush(image, frame));
    painter.drawRoundedRect(frame, kImageRadius, kImageRadius);
    if (image.isNull())
        painter.drawPixmap(frame.center().x() + 1 - kKindSide / 2,
                           frame.center().y() + 1 - kKindSide / 2,
                           kindPixmap(item.filePath, kKindSide, m_view->devicePixelRatioF()));
    painter.setPen(theme.color(Token::line1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(frame).adjusted(0.5, 0.5, -0.5, -0.5), kImageRadius,
                            kImageRadius);
    if (isRawPhoto(item.filePath))
        paintBadge(painter, frame, QStringLiteral("RAW"));
}

void PhotoTileDelegate::paintTexts(QPainter& painter, const QRect& room,
                                   const media::IKImageItem& item, bool isSelected) const {
    const Theme& theme = Theme::instance();
    QRect line(room.left(), room.top(), room.width(), kLineHeight);
    if (!item.latitudeFormat.isEmpty()) {
        painter.drawPixmap(line.right() + 1 - kPinSide, line.top() + 1,
                           themePixmap(QStringLiteral("pin"), kPinSide, theme.color(Token::text3),
                                       m_view->devicePixelRatioF()));
        line.setRight(line.right() - kPinSide - 6);
    }
    painter.setFont(theme.font(FontRole::Cell));
    painter.setPen(theme.color(Token::text1));
    painter.drawText(
        line, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
        elidedName(platform::displayPath(item.fileName), painter.fontMetrics(), line.width()));
    painter.setFont(theme.font(FontRole::Caption));
    painter.setPen(theme.color(isSelected ? Token::text2 : Token::text3));
    const QRect below(room.left(), room.top() + kLineHeight, room.width(), kLineHeight);
    drawWithPlainX(painter, below,
                   painter.fontMetrics().elidedText(detailOf(item), Qt::ElideRight, below.width()));
}

void PhotoTileDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const MediaListModel* model = m_view->listModel();
    const media::ItemPointer item = model != nullptr ? model->itemAt(index.row()) : nullptr;
    if (item == nullptr)
        return;
    const Theme& theme = Theme::instance();
    const QRect tile = option.rect.adjusted(kGap / 2, kAboveTile, -kGap / 2, kAboveTile - kGap);
    const QItemSelectionModel& selection = *m_view->selectionModel();
    const bool isSelected = selection.isSelected(index);
    const bool isCurrent = isSelected && index.row() == selection.currentIndex().row();
    const bool isHovered = (option.state & QStyle::State_MouseOver) != 0;
    painter->save();
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (isSelected || isHovered) {
        painter->setBrush(theme.color(isSelected ? Token::sel : Token::bg3));
        painter->setPen(isCurrent    ? QPen(theme.color(Token::accent), 2)
                        : isSelected ? QPen(theme.color(Token::selLine), 1)
                                     : QPen(Qt::NoPen));
        const double inset = isCurrent ? 1 : 0.5;
        painter->drawRoundedRect(QRectF(tile).adjusted(inset, inset, -inset, -inset), kTileRadius,
                                 kTileRadius);
    }
    const QRect frame(tile.left() + kTileInset, tile.top() + kTileInset,
                      tile.width() - 2 * kTileInset, kImageHeight);
    paintImage(*painter, frame, *item);
    const int textTop = frame.bottom() + 1 + kTextGap;
    paintTexts(
        *painter,
        QRect(frame.left() + kTextInset, textTop, frame.width() - 2 * kTextInset, 2 * kLineHeight),
        *item, isSelected);
    painter->restore();
}

} // namespace clipheave::app
