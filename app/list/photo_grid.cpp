// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/photo_grid.h"

#include "app/list/dropped_paths.h"
#include "app/list/media_list_model.h"
#include "app/list/photo_tile_delegate.h"
#include "app/theme/theme.h"

#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kLeastTileWidth = 172;
/// From the edge to the first cell; the tile has half a gap around it.
constexpr int kSideMargin = 10;

} // namespace

PhotoGrid::PhotoGrid(QWidget* parent)
    : QListView(parent),
      m_thumbnails(*this, [this](const MediaListModel& list) { return visibleThumbnails(list); }) {
    setObjectName(QStringLiteral("localImageBrowserView"));
    setAccessibleName(tr("Photo browser"));
    setFrameShape(QFrame::NoFrame);
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    // Not in batches: a grid shows nothing until the last one, after every file that an import
    // adds.
    setLayoutMode(QListView::SinglePass);
    setUniformItemSizes(true);
    setWordWrap(false);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionRectVisible(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setDragEnabled(false);
    setDragDropMode(QAbstractItemView::NoDragDrop);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setViewportMargins(kSideMargin, 0, kSideMargin, 0);
    setItemDelegate(new PhotoTileDelegate(this));
    auto* drop = new DropOutline(this, true);
    connect(drop, &DropOutline::pathsDropped, this, &PhotoGrid::pathsDropped);
    connect(&Theme::instance(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
}

void PhotoGrid::setModel(QAbstractItemModel* model) {
    if (m_listModel != nullptr)
        m_listModel->disconnect(this);
    m_listModel = qobject_cast<MediaListModel*>(model);
    QListView::setModel(model);
    m_thumbnails.setModel(m_listModel);
    if (m_listModel != nullptr)
        connect(m_listModel, &MediaListModel::contentSorted, this,
                [this] { selectionModel()->clear(); });
}

/// As many tiles in a row as fit at their least width; they grow to fill it.
void PhotoGrid::layoutTiles() {
    // The list lays out as if the scroll bar were always there.
    const int room = maximumViewportSize().width() -
                     style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, verticalScrollBar());
    m_tilesPerRow = std::max(1, room / (kLeastTileWidth + PhotoTileDelegate::kGap));
    const QSize cell(std::max(room / m_tilesPerRow, PhotoTileDelegate::kGap + 1),
                     PhotoTileDelegate::kCellHeight);
    if (cell != gridSize())
        setGridSize(cell);
}

void PhotoGrid::resizeEvent(QResizeEvent* event) {
    layoutTiles();
    QListView::resizeEvent(event);
    m_thumbnails.moved();
}

void PhotoGrid::showEvent(QShowEvent* event) {
    QListView::showEvent(event);
    m_thumbnails.moved();
}

void PhotoGrid::scrollContentsBy(int dx, int dy) {
    QListView::scrollContentsBy(dx, dy);
    m_thumbnails.moved();
}

void PhotoGrid::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Delete)) {
        Q_EMIT removeRequested();
        return;
    }
    QListView::keyPressEvent(event);
}

QList<ThumbnailRequest> PhotoGrid::visibleThumbnails(const MediaListModel& model) const {
    const int firstLine = verticalOffset() / PhotoTileDelegate::kCellHeight;
    const int lines = viewport()->height() / PhotoTileDelegate::kCellHeight + 2;
    const int end = std::min((firstLine + lines) * m_tilesPerRow, model.rowCount());
    QList<ThumbnailRequest> wanted;
    for (int row = std::max(firstLine * m_tilesPerRow, 0); row < end; ++row)
        if (const media::ItemPointer item = model.itemAt(row))
            wanted.append({item, ThumbnailShape::ofTile()});
    return wanted;
}

} // namespace clipheave::app
