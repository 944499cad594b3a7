// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/thumbnail_maker.h"
#include "app/theme/theme.h"

#include <QStyledItemDelegate>

namespace clipheave::app {

class MediaTableView;

/// Paints the cells of the media list.
class MediaRowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit MediaRowDelegate(MediaTableView* view);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

    /// Artwork fills the slot of 24 px; other images stand in it within 16.
    [[nodiscard]] static ThumbnailShape shapeFor(const media::IKImageItem& item,
                                                 double devicePixelRatio);
    /// Returns what hangs at the pointer while rows are dragged.
    [[nodiscard]] QPixmap dragImage(const QModelIndex& first, int count,
                                    double devicePixelRatio) const;

private:
    void readTheme();
    void paintBackground(QPainter& painter, const QRect& rect, const QModelIndex& index) const;
    void paintName(QPainter& painter, const QRect& rect, const QModelIndex& index) const;
    void paintSlot(QPainter& painter, const QRect& slot, const media::IKImageItem& item) const;

    MediaTableView* m_view;
    QColor m_plain, m_odd, m_hover, m_selected, m_selectedLine, m_accent, m_slot;
    QColor m_name, m_cell, m_selectedCell;
    QFont m_nameFont, m_cellFont;
};

} // namespace clipheave::app
