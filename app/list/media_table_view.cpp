// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/media_table_view.h"

#include "app/list/dropped_paths.h"
#include "app/list/media_list_model.h"
#include "app/list/media_row_delegate.h"
#include "app/list/media_table_header.h"

#include <QDrag>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <memory>
#include <numeric>

namespace clipheave::app {

namespace {

constexpr int kRowHeight = 32;
constexpr std::array<int, 7> kDesignWidths = {212, 82, 90, 110, 88, 98, 142};
/// What stands at the ends of a row.
constexpr int kLastColumnExtra = 4;
/// The album gives way a little before a scroll bar comes.
constexpr int kLeastAlbum = 84;
/// The name too, for headers that a wide font makes wider than designed.
constexpr int kLeastName = 176;
constexpr int kLeastColumn = 48;
constexpr int kNameColumn = static_cast<int>(media::Column::Name);
constexpr int kAlbumColumn = static_cast<int>(media::Column::Album);
} // namespace

MediaTableView::MediaTableView(QWidget* parent)
    : QTableView(parent), m_header(new MediaTableHeader(this)),
      m_delegate(new MediaRowDelegate(this)),
      m_thumbnails(*this, [this](const MediaListModel& list) { return visibleThumbnails(list); }) {
    setObjectName(QStringLiteral("dragtableView"));
    setAccessibleName(tr("Media list"));
    setUpLook();
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    auto* drop = new DropOutline(this);
    connect(drop, &DropOutline::pathsDropped, this, &MediaTableView::pathsDropped);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &MediaTableView::columnClicked);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this,
            [this](int section, int, int width) {
                if (!m_layingOut && section < static_cast<int>(m_userWidths.size()))
                    m_userWidths[static_cast<std::size_t>(section)] = width;
            });
}

void MediaTableView::setUpLook() {
    setFrameShape(QFrame::NoFrame);
    setHorizontalHeader(m_header);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(kRowHeight);
    verticalHeader()->setDefaultSectionSize(kRowHeight);
    setItemDelegate(m_delegate);
    setShowGrid(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setMouseTracking(true);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        layoutColumns(); // fonts may be others
        viewport()->update();
    });
}

void MediaTableView::setModel(QAbstractItemModel* model) {
    if (m_listModel != nullptr)
        m_listModel->disconnect(this);
    m_listModel = qobject_cast<MediaListModel*>(model);
    QTableView::setModel(model);
    m_thumbnails.setModel(m_listModel);
    if (m_listModel == nullptr)
        return;
    connect(m_listModel, &MediaListModel::contentSorted, this,
            [this] { selectionModel()->clear(); });
    connect(m_listModel, &MediaListModel::sortStateChanged, this, [this] {
        layoutColumns();
        m_header->viewport()->update();
    });
    layoutColumns();
}

QList<int> MediaTableView::userColumnWidths() const {
    return {m_userWidths.begin(), m_userWidths.end()};
}

void MediaTableView::setUserColumnWidths(const QList<int>& widths) {
    if (widths.size() != static_cast<qsizetype>(m_userWidths.size()))
        return;
    constexpr int kWidest = 4000;
    for (std::size_t i = 0; i < m_userWidths.size(); ++i) {
        const int width = widths[static_cast<qsizetype>(i)];
        m_userWidths[i] = width <= 0 ? 0 : std::clamp(width, kLeastColumn, kWidest);
    }
    layoutColumns();
}

/// Name and album share what the others leave, two parts to one; the last column takes what is left
/// when the user has fixed both.
void MediaTableView::layoutColumns() {
    if (m_listModel == nullptr)
        return;
    std::array<int, 7> designs = kDesignWidths;
    for (std::size_t i = 0; i < designs.size(); ++i)
        if (i != kNameColumn) // names are shortened anyway
            designs[i] = Theme::instance().scaled(designs[i]);
    std::array<int, 7> widths = designs;
    widths.back() += kLastColumnExtra;
    for (std::size_t i = 0; i < widths.size(); ++i)
        widths[i] = m_userWidths[i] > 0
                        ? m_userWidths[i]
                        : std::max(widths[i], m_header->leastWidth(static_cast<int>(i)));
    const int total = std::accumulate(widths.begin(), widths.end(), 0);
    int& name = widths[kNameColumn];
    int& album = widths[kAlbumColumn];
    const bool nameIsFree = m_userWidths[kNameColumn] == 0;
    const bool albumIsFree = m_userWidths[kAlbumColumn] == 0;
    const int designed = std::accumulate(designs.begin(), designs.end(), 0);
    const int leastName = std::clamp(kDesignWidths[kNameColumn] + designed - total, kLeastName,
                                     kDesignWidths[kNameColumn]);
    const int leastAlbum = std::max(kLeastAlbum, m_header->leastWidth(kAlbumColumn));
    const int room = viewport()->width() - total + name + album;
    if (nameIsFree && albumIsFree) {
        name = std::max(leastName, std::min(room * 2 / 3, room - leastAlbum));
        album = std::max(leastAlbum, room - name);
    } else if (nameIsFree) {
        name = std::max(leastName, room - album);
    } else if (albumIsFree) {
        album = std::max(leastAlbum, room - name);
    } else {
        widths.back() = std::max(widths.back(), widths.back() + room - name - album);
    }
    m_layingOut = true;
    for (std::size_t i = 0; i < widths.size(); ++i)
        setColumnWidth(static_cast<int>(i), widths[i]);
    m_layingOut = false;
}

void MediaTableView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    layoutColumns();
    m_thumbnails.moved();
}

void MediaTableView::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    m_thumbnails.moved();
    if (viewport()->underMouse())
        hoverRowAt(rowAt(viewport()->mapFromGlobal(QCursor::pos()).y()));
}

void MediaTableView::hoverRowAt(int row) {
    if (row == m_hoveredRow)
        return;
    for (const int changed : {m_hoveredRow, row})
        if (changed >= 0)
            viewport()->update(0, rowViewportPosition(changed), viewport()->width(), kRowHeight);
    m_hoveredRow = row;
}

void MediaTableView::mouseMoveEvent(QMouseEvent* event) {
    QTableView::mouseMoveEvent(event);
    hoverRowAt(rowAt(event->position().toPoint().y()));
}

bool MediaTableView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Leave)
        hoverRowAt(-1);
    return QTableView::viewportEvent(event);
}

void MediaTableView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Delete)) {
        Q_EMIT removeRequested();
        return;
    }
    const bool isArrow = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
    if (isArrow && currentIndex().isValid() && !selectionModel()->hasSelection()) {
        selectRow(currentIndex().row()); // the first arrow takes the row that it starts from
        return;
    }
    QTableView::keyPressEvent(event);
}

QModelIndex MediaTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const int rows = model() != nullptr ? model()->rowCount() : 0;
    const bool toEdge = action == MoveHome || action == MoveEnd;
    if (!toEdge || rows == 0)
        return QTableView::moveCursor(action, modifiers);
    return model()->index(action == MoveHome ? 0 : rows - 1, std::max(0, currentIndex().column()));
}

void MediaTableView::startDrag(Qt::DropActions supportedActions) {
    const QModelIndexList rows = selectionModel()->selectedRows();
    std::unique_ptr<QMimeData> data(rows.isEmpty() ? nullptr : model()->mimeData(rows));
    if (data == nullptr)
        return;
    auto* drag = new QDrag(this); // deletes itself
    drag->setMimeData(data.release());
    drag->setPixmap(
        m_delegate->dragImage(rows.front(), static_cast<int>(rows.size()), devicePixelRatioF()));
    drag->exec(supportedActions, Qt::CopyAction);
}

QList<ThumbnailRequest> MediaTableView::visibleThumbnails(const MediaListModel& model) const {
    const int first = std::max(rowAt(0), 0);
    const int last = rowAt(viewport()->height() - 1);
    QList<ThumbnailRequest> wanted;
    for (int row = first; row <= (last < 0 ? model.rowCount() - 1 : last); ++row)
        if (const media::ItemPointer item = model.itemAt(row))
            wanted.append({item, MediaRowDelegate::shapeFor(*item, devicePixelRatioF())});
    return wanted;
}

} // namespace clipheave::app
