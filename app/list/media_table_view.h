// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/visible_thumbnails.h"

#include <QTableView>

#include <array>

namespace clipheave::app {

class MediaListModel;
class MediaRowDelegate;
class MediaTableHeader;

/// The table of the media list: "dragtableView".
class MediaTableView : public QTableView {
    Q_OBJECT
public:
    explicit MediaTableView(QWidget* parent = nullptr);

    /// Takes a MediaListModel.
    void setModel(QAbstractItemModel* model) override;
    [[nodiscard]] MediaListModel* listModel() const { return m_listModel; }
    /// Sets the service, ThumbnailService::shared() until then; it outlives the view.
    void setThumbnailService(ThumbnailService* service) { m_thumbnails.setService(service); }
    [[nodiscard]] ThumbnailService* thumbnailService() const { return m_thumbnails.service(); }
    /// Returns the row under the pointer, -1 for none.
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }

    /// Widths that the user has given to columns, for the layout settings; 0 stands for the
    /// design's own width.
    [[nodiscard]] QList<int> userColumnWidths() const;
    void setUserColumnWidths(const QList<int>& widths);

Q_SIGNALS:
    /// A header was clicked; `column` is the number of the media::Column.
    void columnClicked(int column);
    /// Files or folders were dropped whose first is taken.
    void pathsDropped(const QStringList& paths);
    /// The delete key was pressed.
    void removeRequested();

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// Home and End go to the first and the last row: rows are chosen whole.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void setUpLook();
    void layoutColumns();
    void hoverRowAt(int row);
    [[nodiscard]] QList<ThumbnailRequest> visibleThumbnails(const MediaListModel& model) const;

    MediaListModel* m_listModel = nullptr;
    MediaTableHeader* m_header;
    MediaRowDelegate* m_delegate;
    VisibleThumbnails m_thumbnails;
    std::array<int, 7> m_userWidths{};
    bool m_layingOut = false;
    int m_hoveredRow = -1;
};

} // namespace clipheave::app
