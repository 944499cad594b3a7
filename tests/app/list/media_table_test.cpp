// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/list/dropped_paths.h"
#include "app/list/list_painting.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "tests/app/drops.h"
#include "tests/app/list/list_items.h"
#include "tests/testkit/testkit.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace clipheave::app {

namespace {

QList<int> selectedRowsOf(const QAbstractItemView& view) {
    QList<int> rows;
    for (const QModelIndex& index : view.selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void selectTableRow(QAbstractItemView& view, int row) {
    view.selectionModel()->setCurrentIndex(view.model()->index(row, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

class MediaTable : public testing::Test {
protected:
    void SetUp() override {
        media::MediaListSort::resetFlags();
        m_view.setThumbnailService(&m_service);
        m_view.setModel(&m_model);
        m_view.resize(839, 400);
        m_view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_view));
    }
    [[nodiscard]] QStringList names() const {
        QStringList all;
        for (int row = 0; row < m_model.rowCount(); ++row)
            all.append(m_model.index(row, 0).data().toString());
        return all;
    }
    /// Whether the view accepts a drag over it, and the drop.
    [[nodiscard]] bool takes(const QMimeData& data, bool drop = false) {
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                              Qt::NoModifier);
        QApplication::sendEvent(m_view.viewport(), &enter);
        QDragMoveEvent move(QPoint(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_view.viewport(), &move);
        EXPECT_EQ(enter.isAccepted(), move.isAccepted());
        EXPECT_EQ(m_view.findChild<QWidget*>(u"dropOutline"_s)->isVisible(), enter.isAccepted());
        if (drop) {
            QDropEvent end(QPointF(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(m_view.viewport(), &end);
            EXPECT_EQ(end.isAccepted(), enter.isAccepted());
        } else {
            QDragLeaveEvent leave;
            QApplication::sendEvent(m_view.viewport(), &leave);
        }
        EXPECT_FALSE(m_view.findChild<QWidget*>(u"dropOutline"_s)->isVisible());
        return enter.isAccepted();
    }

    testkit::TempDir m_dir;
    ThumbnailService m_service{ThumbnailCache(m_dir.path("thumbnails"))};
    MediaListModel m_model;
    MediaTableView m_view;
};

} // namespace

TEST_F(MediaTable, ShowsTheColumnsOfTheItems) {
    auto item = listItem(u"/a/clip <b>.mp4"_s, u"Anna"_s);
    item->fileduratStr = u"5s"_s;
    item->fileType = u"MPEG-4 video"_s;
    item->fileAblumName = u"Trip"_s;
    item->fileCreateDateStr = u"2025:06:14 21:41:07"_s;
    m_model.appendItem(item);
    m_model.appendItem(std::make_shared<media::IKImageItem>());
    QStringList cells, headers, emptyRow;
    for (int column = 0; column < m_model.columnCount(); ++column) {
        cells.append(m_model.index(0, column).data().toString());
        EXPECT_EQ(m_model.index(0, column).data(Qt::AccessibleTextRole).toString(), cells.back());
        emptyRow.append(m_model.index(1, column).data().toString());
        headers.append(m_model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    }
    EXPECT_EQ(cells.join(u'|'),
              u"clip <b>.mp4|1.00 MB|5s|MPEG-4 video|Anna|Trip|2025:06:14 21:41:07");
    EXPECT_EQ(emptyRow.join(u'|'), u"|||Image|||");
    EXPECT_EQ(headers.join(u'|'), u"Media Name|Media Size|Media Length|Media Kind|Media Artist|"
                                  "Media Album|Media Created Date"_s);
    EXPECT_EQ(m_model.index(0, 4).data(Qt::ToolTipRole).toString(), u"Anna");
    EXPECT_EQ(m_model.index(0, 0).data(Qt::ToolTipRole).toString(), u"<qt>clip &lt;b&gt;.mp4</qt>");
    EXPECT_FALSE(m_model.index(1, 4).data(Qt::ToolTipRole).isValid());
}

TEST_F(MediaTable, ReplacedItemsShowInTheirRowsAndKeepTheSelection) {
    auto items = listItems(6);
    items.push_back(listItem(items[2]->filePath)); // the same file once more
    m_model.setContent(items);
    m_model.sortByColumn(0);
    m_model.sortByColumn(0); // whichever way the flag stood: once up, once down
    selectTableRow(m_view, 1);
    const QStringList before = names();
    const QSignalSpy changes(&m_model, &QAbstractItemModel::dataChanged);
    ItemChanges replaced;
    for (const int i : {2, 3, 5}) {
        auto copy = std::make_shared<media::IKImageItem>(*items[static_cast<std::size_t>(i)]);
        copy->fileName = u"new %1"_s.arg(i);
        replaced.emplace_back(items[static_cast<std::size_t>(i)], copy);
    }
    replaced.emplace_back(listItem(u"/not/in/the list"_s), listItem(u"/not/in/the list"_s));
    m_model.replaceItems(replaced);
    std::size_t rows = 0;
    for (const auto& change : changes)
        for (int row = change[0].toModelIndex().row(); row <= change[1].toModelIndex().row(); ++row)
            rows += names()[row] != before[row] ? 1u : 100u;
    EXPECT_EQ(rows, replaced.size() - 1) << "exactly the rows that are others now";
    EXPECT_EQ(names().filter(u"new"_s).size(), 3);
    EXPECT_EQ(names().count(u"clip 2.mp4"_s), 1) << "the other one of the same path stays";
    EXPECT_EQ(selectedRowsOf(m_view), QList<int>{1});
    EXPECT_TRUE(m_model.isSorted());
}

TEST_F(MediaTable, AppendAndRefillKeepSelectionAndScrollPosition) {
    m_model.setContent(listItems(200));
    QApplication::processEvents();
    selectTableRow(m_view, 3);
    selectTableRow(m_view, 150);
    m_view.verticalScrollBar()->setValue(1000);
    const QSignalSpy selections(m_view.selectionModel(), &QItemSelectionModel::selectionChanged);
    const QSignalSpy resets(&m_model, &QAbstractItemModel::modelReset);
    for (int i = 0; i < 50; ++i)
        m_model.appendItem(listItem(u"/videos/new.mp4"_s));
    m_model.setContent(listItems(300)); // another list of other items
    QApplication::processEvents();
    EXPECT_EQ(m_view.verticalScrollBar()->value(), 1000);
    EXPECT_EQ(selectedRowsOf(m_view), QList<int>({3, 150}));
    EXPECT_EQ(m_view.currentIndex().row(), 150);
    EXPECT_TRUE(selections.isEmpty());
    EXPECT_TRUE(resets.isEmpty());
    EXPECT_EQ(names().at(260), u"clip 260.mp4");

    auto fewer = listItems(100);
    fewer.erase(fewer.begin());
    m_model.setContent(fewer);
    EXPECT_EQ(names().front(), u"clip 1.mp4");
    EXPECT_EQ(m_model.rowCount(), 99);
    EXPECT_EQ(selectedRowsOf(m_view), QList<int>({3}));
}

TEST_F(MediaTable, SortsItsContentAndForgetsItWithTheNextFilling) {
    auto items = listItems(0);
    for (const char* name : {"/b.mp4", "/a.mp4", "/_c.mp4", "/d10.mp4", "/d9.mp4"})
        items.push_back(listItem(QString::fromLatin1(name)));
    m_model.setContent(items);
    selectTableRow(m_view, 1);
    QSignalSpy clicks(&m_view, &MediaTableView::columnClicked);
    QSignalSpy states(&m_model, &MediaListModel::sortStateChanged);
    const auto* header = m_view.horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(60, 10));
    ASSERT_EQ(clicks.size(), 1);
    EXPECT_EQ(clicks[0][0].toInt(), 0);
    m_model.sortByColumn(0);
    EXPECT_EQ(names().join(u' '), u"d10.mp4 d9.mp4 b.mp4 a.mp4 _c.mp4");
    EXPECT_EQ(m_model.sortedColumn(), media::Column::Name);
    EXPECT_FALSE(m_model.isAscending());
    EXPECT_TRUE(selectedRowsOf(m_view).isEmpty());
    m_model.sortByColumn(0);
    EXPECT_EQ(names().join(u' '), u"_c.mp4 a.mp4 b.mp4 d9.mp4 d10.mp4");
    EXPECT_TRUE(m_model.isAscending());
    m_model.sortByColumn(1);
    EXPECT_TRUE(m_model.isAscending()); // numbers start small
    EXPECT_EQ(states.size(), 3);

    items.push_back(listItem(u"/new.mp4"_s));
    m_model.setContent(items);
    EXPECT_EQ(names().join(u' '), u"b.mp4 a.mp4 _c.mp4 d10.mp4 d9.mp4 new.mp4");
    EXPECT_FALSE(m_model.isSorted());
    m_model.sortByColumn(99);
    EXPECT_FALSE(m_model.isSorted());
}

TEST_F(MediaTable, TakesDropsThatBeginWithMediaOrAFolder) {
    m_dir.write("folder.x/note.txt", "x");
    const auto urls = [&](const QStringList& paths) {
        auto data = std::make_unique<QMimeData>();
        data->setUrls(urlsOf(paths));
        return data;
    };
    EXPECT_TRUE(takes(*urls({u"/a/b.MP3"_s, u"/a/b.txt"_s})));
    EXPECT_TRUE(takes(*urls({u"/a/b c.mov"_s})));
    EXPECT_TRUE(takes(*urls({m_dir.path("folder.x")})));
    EXPECT_FALSE(takes(*urls({m_dir.path("folder.x/note.txt")})));
    EXPECT_FALSE(takes(*urls({u"/a/b.jpg"_s, u"/a/b.mp3"_s})));
    EXPECT_FALSE(takes(*urls({})));
    QMimeData text;
    text.setText(u"/a/b.mp3"_s);
    EXPECT_FALSE(takes(text));
    QMimeData web;
    web.setUrls({QUrl(u"https://example.org/b.mp3"_s)});
    EXPECT_FALSE(takes(web));

    QSignalSpy drops(&m_view, &MediaTableView::pathsDropped);
    EXPECT_TRUE(takes(*urls({u"/a/b.mp3"_s, u"/ü/c d.png"_s}), true));
    EXPECT_FALSE(takes(*urls({u"/a/b.jpg"_s}), true));
    ASSERT_EQ(drops.size(), 1);
    EXPECT_EQ(drops[0][0].toStringList(), QStringList({u"/a/b.mp3"_s, u"/ü/c d.png"_s}));

    // A name whose bytes are not UTF-8 comes through.
    class RawUrls : public QMimeData {
        QStringList formats() const override { return {u"text/uri-list"_s}; }
        QVariant retrieveData(const QString&, QMetaType) const override {
            return QByteArray("# comment\r\nfile:///a/%E4.mp3\r\nfile://localhost/b/\r\n");
        }
    } raw;
    EXPECT_EQ(droppedPaths(&raw), QStringList({u"/a/"_s + QChar(0xDCE4) + u".mp3"_s, u"/b"_s}));
}

TEST_F(MediaTable, ADragCarriesTheRowNumbersAlone) {
    m_model.setContent(listItems(9));
    const std::unique_ptr<QMimeData> data(m_model.mimeData(
        {m_model.index(7, 0), m_model.index(2, 0), m_model.index(2, 1), m_model.index(7, 3)}));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->formats(), QStringList({u"text/uri-list"_s}));
    const QByteArray archive = data->data(u"text/uri-list"_s);
    EXPECT_EQ(archive, QByteArray::fromHex("00000002"
                                           "00000002"
                                           "00000007"));
    EXPECT_EQ(MediaListModel::rowsFromArchive(archive), QList<int>({2, 7}));
    EXPECT_FALSE(archive.contains("clip"));
    EXPECT_FALSE(takes(*data)); // the list does not take its own rows
    EXPECT_TRUE(MediaListModel::rowsFromArchive("file:///a.mp3").isEmpty());
    EXPECT_TRUE(MediaListModel::rowsFromArchive(QByteArray::fromHex("ffffffff00000001")).isEmpty());
    EXPECT_EQ(m_model.mimeData({}), nullptr);
}

TEST_F(MediaTable, ColumnsFillTheWidthAndKeepWhatTheUserGave) {
    m_model.setContent(listItems(3));
    const auto total = [&] { return m_view.horizontalHeader()->length(); };
    EXPECT_EQ(total(), m_view.viewport()->width());
    EXPECT_GE(m_view.columnWidth(1), 82);
    EXPECT_LT(m_view.columnWidth(2), 110); // as wide as its header needs
    EXPECT_GE(m_view.columnWidth(0), 176);
    m_view.resize(1200, 400);
    EXPECT_EQ(total(), 1200);
    EXPECT_NEAR(m_view.columnWidth(0), 2 * m_view.columnWidth(5), 3);
    m_view.horizontalHeader()->resizeSection(3, 60);
    EXPECT_EQ(m_view.userColumnWidths(), QList<int>({0, 0, 0, 60, 0, 0, 0}));
    m_view.resize(1100, 400);
    EXPECT_EQ(m_view.columnWidth(3), 60);
    EXPECT_EQ(total(), 1100);
    m_view.resize(500, 400);
    EXPECT_GE(m_view.columnWidth(0), 176);
    EXPECT_GT(total(), 500);
    m_view.setUserColumnWidths({300, 0, 0, 0, 0, 90, 0});
    m_view.resize(1200, 400);
    EXPECT_EQ(total(), 1200);
    EXPECT_EQ(m_view.columnWidth(0), 300);
}

TEST_F(MediaTable, DeleteKeyAsksForRemoval) {
    m_model.setContent(listItems(3));
    PhotoGrid grid;
    grid.setThumbnailService(&m_service);
    QSignalSpy fromTable(&m_view, &MediaTableView::removeRequested);
    QSignalSpy fromGrid(&grid, &PhotoGrid::removeRequested);
    QTest::keyClick(&m_view, Qt::Key_Delete);
    QTest::keyClick(&m_view, Qt::Key_Down);
    QTest::keyClick(&grid, Qt::Key_Delete);
    EXPECT_EQ(fromTable.size(), 1);
    EXPECT_EQ(fromGrid.size(), 1);
}

TEST_F(MediaTable, GridStaysWhileMoreIsAdded) {
    m_model.setContent(listItems(3000));
    PhotoGrid grid;
    grid.setThumbnailService(&m_service);
    grid.setModel(&m_model);
    grid.resize(839, 700);
    grid.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
    m_model.appendItem(listItem(u"/videos/new.mp4"_s));
    grid.doItemsLayout(); // which the event loop calls for it
    EXPECT_EQ(grid.indexAt({60, 60}).row(), 0);
    EXPECT_EQ(grid.indexAt({260, 60}).row(), 1);
}

TEST_F(MediaTable, GridShowsTheSameRowsAsTiles) {
    m_model.setContent(listItems(40));
    PhotoGrid grid;
    grid.setThumbnailService(&m_service);
    grid.setModel(&m_model);
    grid.resize(839, 700);
    grid.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
    EXPECT_EQ(grid.tilesPerRow(), 4);
    for (const int row : {0, 3, 4, 13, 39}) {
        grid.scrollTo(m_model.index(row, 0));
        const QRect tile = grid.visualRect(m_model.index(row, 0));
        EXPECT_EQ(tile.left() / tile.width(), row % 4) << row;
        EXPECT_EQ((tile.top() + grid.verticalScrollBar()->value()) / tile.height(), row / 4) << row;
        EXPECT_EQ(grid.indexAt(tile.center()).row(), row);
    }
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      grid.visualRect(m_model.index(38, 0)).center());
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ControlModifier,
                      grid.visualRect(m_model.index(36, 0)).center());
    EXPECT_EQ(selectedRowsOf(grid), QList<int>({36, 38}));
    const int scrolled = grid.verticalScrollBar()->value();
    m_model.appendItem(listItem(u"/videos/new.mp4"_s));
    QTest::qWait(50);
    EXPECT_EQ(grid.verticalScrollBar()->value(), scrolled);
    EXPECT_EQ(selectedRowsOf(grid), QList<int>({36, 38}));
}

TEST(ListPainting, ElidesNamesBeforeTheirExtension) {
    const QFontMetrics metrics{QFont()};
    const QString name = u"reynisfjara-sunset-drone-second-flight.mp4"_s;
    EXPECT_EQ(elidedName(name, metrics, 2000), name);
    for (int width = 80; width < metrics.horizontalAdvance(name); width += 7) {
        const QString text = elidedName(name, metrics, width);
        EXPECT_LE(metrics.horizontalAdvance(text), width) << text;
        EXPECT_TRUE(text.endsWith(u"ght.mp4"_s)) << text;
        EXPECT_TRUE(text.contains(u'…'));
    }
    const QString emoji = u"😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀.mov"_s;
    for (int width = 60; width < 200; ++width)
        EXPECT_TRUE(elidedName(emoji, metrics, width).isValidUtf16());
    EXPECT_EQ(elidedName(u"abc.mp4"_s, metrics, 0).size(), 1);
}

} // namespace clipheave::app
