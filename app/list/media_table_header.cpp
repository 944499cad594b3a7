// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/media_table_header.h"

#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/theme/theme.h"

#include <QHoverEvent>
#include <QMouseEvent>
#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kHeaderHeight = 32;
constexpr int kSeparatorHeight = 16;
constexpr int kHeaderPadding = 6;
constexpr int kHeaderLead = 12; // as the rows
constexpr int kArrowSide = 12;
constexpr int kArrowGap = 2;
/// The arrow stands in the padding for the most part, so that the column hardly widens.
constexpr int kBesideArrow = 2;
constexpr int kLeastSection = 48;

QFont headerFont() {
    QFont font = Theme::instance().font(FontRole::Cell);
    font.setPointSizeF(font.pointSizeF() * 11.5 / 12);
    font.setWeight(QFont::Medium);
    return font;
}

} // namespace

MediaTableHeader::MediaTableHeader(MediaTableView* view)
    : QHeaderView(Qt::Horizontal, view), m_view(view) {
    setSectionsClickable(true);
    setHighlightSections(false);
    setSectionResizeMode(QHeaderView::Interactive);
    setMinimumSectionSize(kLeastSection);
    setAccessibleName(tr("Columns of the media list"));
    viewport()->setAttribute(Qt::WA_Hover);
    connect(&Theme::instance(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
}

QSize MediaTableHeader::sizeHint() const {
    return {QHeaderView::sizeHint().width(), kHeaderHeight};
}

bool MediaTableHeader::isSorted(int section) const {
    return m_view->listModel()->sortedColumn() ==
           media::kColumns[static_cast<std::size_t>(section)];
}

void MediaTableHeader::mouseDoubleClickEvent(QMouseEvent* event) {
    const bool betweenSections = cursor().shape() == Qt::SplitHCursor;
    if (betweenSections)
        QHeaderView::mouseDoubleClickEvent(event);
    else
        QHeaderView::mousePressEvent(event);
}

int MediaTableHeader::leastWidth(int section) const {
    const int text =
        QFontMetrics(headerFont())
            .horizontalAdvance(
                model()->headerData(section, Qt::Horizontal, Qt::DisplayRole).toString());
    return text + 1 + kHeaderPadding + (section == 0 ? kHeaderLead : 0) +
           (isSorted(section) ? kArrowGap + kArrowSide + kBesideArrow : kHeaderPadding);
}

bool MediaTableHeader::viewportEvent(QEvent* event) {
    int hovered = m_hovered;
    if (event->type() == QEvent::HoverMove)
        hovered = logicalIndexAt(static_cast<QHoverEvent*>(event)->position().toPoint());
    else if (event->type() == QEvent::HoverLeave)
        hovered = -1;
    if (hovered != m_hovered) {
        m_hovered = hovered;
        viewport()->update();
    }
    return QHeaderView::viewportEvent(event);
}

void MediaTableHeader::paintEvent(QPaintEvent* event) {
    {
        const Theme& theme = Theme::instance();
        QPainter painter(viewport());
        painter.fillRect(viewport()->rect(), theme.color(Token::bg1));
        painter.fillRect(0, height() - 1, viewport()->width(), 1, theme.color(Token::line1));
    }
    QHeaderView::paintEvent(event);
}

void MediaTableHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
    const MediaListModel* model = m_view->listModel();
    if (model == nullptr || !rect.isValid())
        return;
    const Theme& theme = Theme::instance();
    painter->fillRect(rect, theme.color(section == m_hovered ? Token::bg3 : Token::bg1));
    painter->fillRect(rect.left(), rect.bottom(), rect.width(), 1, theme.color(Token::line1));
    if (section + 1 < count())
        painter->fillRect(rect.right(), rect.top() + (rect.height() - kSeparatorHeight) / 2, 1,
                          kSeparatorHeight, theme.color(Token::line1));
    const bool hasArrow = isSorted(section);
    const Qt::Alignment alignment(
        model->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole).value<Qt::Alignment>());
    QRect room = rect.adjusted(kHeaderPadding + (section == 0 ? kHeaderLead : 0), 0,
                               hasArrow ? -kBesideArrow : -kHeaderPadding, 0);
    painter->setFont(headerFont());
    painter->setPen(theme.color(hasArrow ? Token::text1 : Token::text2));
    const int arrowRoom = hasArrow ? kArrowSide + kArrowGap : 0;
    const QString text = painter->fontMetrics().elidedText(
        model->headerData(section, Qt::Horizontal, Qt::DisplayRole).toString(), Qt::ElideRight,
        room.width() - arrowRoom);
    const int width = painter->fontMetrics().horizontalAdvance(text);
    if ((alignment & Qt::AlignRight) != 0)
        room.setLeft(room.right() + 1 - width - arrowRoom);
    painter->drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text);
    if (hasArrow)
        painter->drawPixmap(room.left() + width + kArrowGap, rect.center().y() - kArrowSide / 2,
                            themePixmap(model->isAscending() ? QStringLiteral("chevron-up")
                                                             : QStringLiteral("chevron-down"),
                                        kArrowSide, theme.color(Token::text1),
                                        devicePixelRatioF()));
}

} // namespace clipheave::app
