// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/thumbnail_maker.h"

#include <QStyledItemDelegate>

namespace clipheave::app {

class PhotoGrid;

/// Paints the tiles of the photo browser: the image, the name with a pin where the position is
/// known, the size in pixels.
class PhotoTileDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    static constexpr int kGap = 12; ///< between tiles
    static constexpr int kCellHeight = 181;

    explicit PhotoTileDelegate(PhotoGrid* view);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    /// Returns the second line: "5568 x 3712", else the duration, else the size.
    [[nodiscard]] static QString detailOf(const media::IKImageItem& item);

private:
    void paintImage(QPainter& painter, const QRect& frame, const media::IKImageItem& item) const;
    void paintTexts(QPainter& painter, const QRect& room, const media::IKImageItem& item,
                    bool isSelected) const;

    PhotoGrid* m_view;
};

} // namespace clipheave::app
