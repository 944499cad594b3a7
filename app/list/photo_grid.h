// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/visible_thumbnails.h"

#include <QListView>

namespace clipheave::app {

class MediaListModel;

/// The photo browser: "localImageBrowserView". The same content in the same order as the table, as
/// tiles.
class PhotoGrid : public QListView {
    Q_OBJECT
public:
    explicit PhotoGrid(QWidget* parent = nullptr);

    /// Takes a MediaListModel.
    void setModel(QAbstractItemModel* model) override;
    [[nodiscard]] MediaListModel* listModel() const { return m_listModel; }
    /// Sets the service, ThumbnailService::shared() until then; it outlives the view.
    void setThumbnailService(ThumbnailService* service) { m_thumbnails.setService(service); }
    [[nodiscard]] ThumbnailService* thumbnailService() const { return m_thumbnails.service(); }
    /// Returns how many tiles stand side by side.
    [[nodiscard]] int tilesPerRow() const { return m_tilesPerRow; }

Q_SIGNALS:
    /// Files or folders were dropped whose first is taken.
    void pathsDropped(const QStringList& paths);
    /// The delete key was pressed.
    void removeRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void showEvent(QShowEvent* event) override;

private:
    void layoutTiles();
    [[nodiscard]] QList<ThumbnailRequest> visibleThumbnails(const MediaListModel& model) const;

    MediaListModel* m_listModel = nullptr;
    VisibleThumbnails m_thumbnails;
    int m_tilesPerRow = 1;
};

} // namespace clipheave::app
