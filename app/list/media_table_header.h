// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHeaderView>

namespace clipheave::app {

class MediaTableView;

/// The header of the media list, with the arrow of the sorted column.
class MediaTableHeader : public QHeaderView {
    Q_OBJECT
public:
    explicit MediaTableHeader(MediaTableView* view);
    [[nodiscard]] QSize sizeHint() const override;
    /// Returns the width that the section needs to show its text in full, with the arrow when it
    /// has one.
    [[nodiscard]] int leastWidth(int section) const;

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    /// Two quick clicks are two clicks: each flips the order.
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] bool isSorted(int section) const;

    MediaTableView* m_view;
    int m_hovered = -1;
};

} // namespace clipheave::app
