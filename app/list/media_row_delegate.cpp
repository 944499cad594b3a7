// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/media_row_delegate.h"

#include "app/list/list_painting.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"

#include <QItemSelectionModel>
#include <QPainter>

#include <cmath>

namespace clipheave::app {

namespace {

constexpr int kRowSide = 32;
constexpr int kLead = 12; // before the first cell
constexpr int kCellPadding = 6;
constexpr int kSlotSide = 24;
constexpr int kSlotRadius = 4;
constexpr int kSmallImage = 16;
constexpr int kSlotGap = 10;
constexpr int kBarWidth = 3;
constexpr double kOddRow = 0.55;
constexpr double kBetweenSelected = 0.45;

QColor mixed(const QColor& over, const QColor& under, double part) {
    const auto mix = [part](float a, float b) {
        return static_cast<float>(a * part + b * (1 - part));
    };
    return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                            mix(over.blueF(), under.blueF()));
}

} // namespace

MediaRowDelegate::MediaRowDelegate(MediaTableView* view) : QStyledItemDelegate(view), m_view(view) {
    readTheme();
    connect(&Theme::instance(), &Theme::changed, this, &MediaRowDelegate::readTheme);
}

void MediaRowDelegate::readTheme() {
    const Theme& theme = Theme::instance();
    m_plain = theme.color(Token::bg1);
    m_odd = mixed(theme.color(Token::bg2), m_plain, kOddRow);
    m_hover = theme.color(Token::bg3);
    m_slot = theme.color(Token::bg3);
    m_selected = theme.color(Token::sel);
    m_selectedLine = mixed(theme.color(Token::selLine), m_selected, kBetweenSelected);
    m_accent = theme.color(Token::accent);
    m_name = theme.color(Token::name);
    m_cell = theme.color(Token::text2);
    m_selectedCell = theme.color(Token::text1);
    m_nameFont = theme.font(FontRole::Body);
    m_cellFont = theme.font(FontRole::Cell);
}

QSize MediaRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const int text = QFontMetrics(index.column() == 0 ? m_nameFont : m_cellFont)
                         .horizontalAdvance(index.data(Qt::DisplayRole).toString());
    const int before = index.column() == 0 ? kLead + kSlotSide + kSlotGap : 0;
    return {before + text + 2 * kCellPadding + 1, kRowSide};
}

ThumbnailShape MediaRowDelegate::shapeFor(const media::IKImageItem& item, double devicePixelRatio) {
    const auto device = [devicePixelRatio](int side) {
        return static_cast<int>(std::lround(side * devicePixelRatio));
    };
    if (item.fileImage.isNull())
        return {{device(kSmallImage), device(kSmallImage)}, ThumbnailShape::Fit, 0};
    return {{device(kSlotSide), device(kSlotSide)}, ThumbnailShape::Fill, device(kSlotRadius)};
}

void MediaRowDelegate::paintBackground(QPainter& painter, const QRect& rect,
                                       const QModelIndex& index) const {
    const int row = index.row();
    const QItemSelectionModel& selection = *m_view->selectionModel();
    const bool isSelected = selection.isSelected(index);
    painter.fillRect(rect, isSelected                    ? m_selected
                           : row == m_view->hoveredRow() ? m_hover
                           : row % 2 == 1                ? m_odd
                                                         : m_plain);
    if (isSelected && row > 0 && selection.isSelected(index.siblingAtRow(row - 1)))
        painter.fillRect(rect.left(), rect.top(), rect.width(), 1, m_selectedLine);
    if (index.column() == 0 && row == selection.currentIndex().row() &&
        (isSelected || m_view->hasFocus()))
        painter.fillRect(rect.left(), rect.top(), kBarWidth, rect.height(), m_accent);
}

void MediaRowDelegate::paintSlot(QPainter& painter, const QRect& slot,
                                 const media::IKImageItem& item) const {
    const double ratio = m_view->devicePixelRatioF();
    ThumbnailService* service = m_view->thumbnailService();
    QPixmap image = service != nullptr ? service->image(item, shapeFor(item, ratio)) : QPixmap();
    const bool fills = !image.isNull() && !item.fileImage.isNull();
    if (!fills) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_slot);
        painter.drawRoundedRect(slot, kSlotRadius, kSlotRadius);
        painter.setRenderHint(QPainter::Antialiasing, false);
    }
    if (image.isNull())
        image = kindPixmap(item.filePath, kSmallImage, ratio);
    else
        image.setDevicePixelRatio(ratio);
    const QSizeF size = image.deviceIndependentSize();
    painter.drawPixmap(slot.topLeft() + QPointF((slot.width() - size.width()) / 2,
                                                (slot.height() - size.height()) / 2)
                                            .toPoint(),
                       image);
}

void MediaRowDelegate::paintName(QPainter& painter, const QRect& rect,
                                 const QModelIndex& index) const {
    const media::ItemPointer item = m_view->listModel()->itemAt(index.row());
    const QRect slot(rect.left() + kLead + kCellPadding,
                     rect.top() + (rect.height() - kSlotSide) / 2, kSlotSide, kSlotSide);
    paintSlot(painter, slot, *item);
    const QRect room =
        rect.adjusted(kLead + kCellPadding + kSlotSide + kSlotGap, 0, -kCellPadding, 0);
    painter.setFont(m_nameFont);
    painter.setPen(m_name);
    painter.drawText(
        room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
        elidedName(index.data(Qt::DisplayRole).toString(), painter.fontMetrics(), room.width()));
}

void MediaRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    paintBackground(*painter, option.rect, index);
    if (m_view->listModel() == nullptr || m_view->listModel()->itemAt(index.row()) == nullptr)
        return;
    if (index.column() == 0)
        return paintName(*painter, option.rect, index);
    const QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty())
        return;
    painter->setFont(m_cellFont);
    painter->setPen(m_view->selectionModel()->isSelected(index) ? m_selectedCell : m_cell);
    const QRect room = option.rect.adjusted(kCellPadding, 0, -kCellPadding, 0);
    const auto alignment = index.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
    painter->drawText(room, static_cast<int>(alignment | Qt::TextSingleLine),
                      painter->fontMetrics().elidedText(text, Qt::ElideRight, room.width()));
}

QPixmap MediaRowDelegate::dragImage(const QModelIndex& first, int count,
                                    double devicePixelRatio) const {
    constexpr int kWidth = 240;
    QPixmap image(QSize(kWidth, kRowSide) * devicePixelRatio);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_selectedLine);
    painter.setBrush(m_selected);
    painter.drawRoundedRect(QRectF(0.5, 0.5, kWidth - 1, kRowSide - 1), kSlotRadius, kSlotRadius);
    painter.setFont(m_nameFont);
    painter.setPen(m_selectedCell);
    const QString text = count == 1 ? first.data(Qt::DisplayRole).toString()
                                    : tr("%1 items").arg(QString::number(count));
    const QRect room(kLead, 0, kWidth - 2 * kLead, kRowSide);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                     elidedName(text, painter.fontMetrics(), room.width()));
    return image;
}

} // namespace clipheave::app
