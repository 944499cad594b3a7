// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the media list with 100,000 items: sorting, appending, memory, scrolling. Prints a table
// and fails when a target is missed. Needs no display.
// usage: list_bench [--cpu]
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/theme/theme.h"
#include "bench/report.h"
#include "platform/foundation/utc.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <random>

#include <malloc.h>

namespace {

using namespace clipheave;
using app::MediaListModel;
using bench::report;
using bench::Stopwatch;

constexpr int kItems = 100'000;
constexpr int kTiles = 10'000;
constexpr int kFrames = 400;
constexpr int kPhotos = 60;

media::ItemPointer syntheticItem(int i, std::mt19937& random) {
    static const char* const kExtensions[] = {"mp4", "mov", "mp3", "flac", "jpg", "mkv"};
    static const char* const kWords[] = {"Harbour", "northbound", "Aurora", "interview", "IMG"};
    auto item = std::make_shared<media::IKImageItem>();
    item->fileName = QStringLiteral("%1_%2-%3.%4")
                         .arg(QLatin1String(kWords[random() % 5]))
                         .arg(random() % 30'000)
                         .arg(i)
                         .arg(QLatin1String(kExtensions[random() % 6]));
    item->filePath = QStringLiteral("/media/nomad/ring-road/day-%1/").arg(i % 40) + item->fileName;
    item->sizeBytes = random() % 9'000'000'000ull;
    item->fileSize =
        QStringLiteral("%1 MB").arg(static_cast<double>(item->sizeBytes) / 1e6, 0, 'f', 2);
    item->fileduration = static_cast<double>(random() % 9000);
    item->fileduratStr = QStringLiteral("%1m:%2s").arg(random() % 60).arg(random() % 60);
    item->fileType = QStringLiteral("MPEG-4 video");
    item->fileArist = QStringLiteral("Artist %1").arg(random() % 500);
    item->fileAblumName = QStringLiteral("Album %1").arg(random() % 4000);
    item->fileCreateDate = QDateTime::fromMSecsSinceEpoch(
        1'600'000'000'000 + static_cast<qint64>(random()) * 30, platform::kUtc);
    item->fileCreateDateStr = item->fileCreateDate.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    item->modificationDate = item->fileCreateDate;
    return item;
}

/// Bytes in use on the heap.
double heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// The longest frame, in milliseconds, of scrolling down `step` px a frame, painting included.
double longestFrame(QAbstractItemView& view, int step) {
    double longest = 0;
    QScrollBar* bar = view.verticalScrollBar();
    bar->setValue(0);
    QApplication::processEvents();
    for (int frame = 0; frame < kFrames; ++frame) {
        const Stopwatch watch;
        bar->setValue(bar->value() + step);
        QApplication::processEvents();
        longest = std::max(longest, watch.milliseconds());
    }
    return longest;
}

double longestFrameAtRest(int duration) {
    double longest = 0;
    QElapsedTimer whole;
    whole.start();
    while (whole.elapsed() < duration) {
        const Stopwatch watch;
        QApplication::processEvents();
        longest = std::max(longest, watch.milliseconds());
    }
    return longest;
}

void measureSorts(MediaListModel& model) {
    for (const media::Column column : media::kColumns)
        for (const char* const direction : {"first click", "second click"}) {
            const Stopwatch watch;
            model.sortByColumn(static_cast<int>(column));
            const QByteArray what =
                "sort by " + media::MediaListSort::identifier(column).toLatin1() + ", " + direction;
            report(what.constData(), watch.milliseconds(), 150, "ms");
        }
}

void measureSelections(MediaListModel& model, app::MediaTableView& view,
                       const std::vector<media::ItemPointer>& items) {
    const Stopwatch selecting;
    view.selectAll();
    QApplication::processEvents();
    report("100,000 rows: select all", selecting.milliseconds(), 33, "ms");
    app::ItemChanges changes;
    for (const media::ItemPointer& item : items)
        changes.emplace_back(item, media::changedCopy(*item, [](auto&) {}));
    const Stopwatch changing;
    model.replaceItems(changes);
    QApplication::processEvents();
    report("100,000 rows: new names for all", changing.milliseconds(), 150, "ms");
    const Stopwatch removing;
    model.setContent({items.front()});
    QApplication::processEvents();
    report("100,000 rows: remove all but one", removing.milliseconds(), 33, "ms");
}

/// Real frames for the first tiles, so that thumbnails arrive while the grid scrolls.
void makePhotos(const QTemporaryDir& folder, std::vector<media::ItemPointer>& items) {
    QImage videoFrame(1600, 1200, QImage::Format_RGB32);
    for (int i = 0; i < kPhotos; ++i) {
        videoFrame.fill(QColor::fromHsv(i * 6, 160, 200));
        const QString path = folder.filePath(QStringLiteral("%1.jpg").arg(i));
        videoFrame.save(path, "jpeg");
        media::ItemPointer& item = items[static_cast<std::size_t>(i)];
        item = media::changedCopy(*item, [&path](auto& copy) { copy.filePath = path; });
    }
}

void measureGrid(const std::vector<media::ItemPointer>& items, app::ThumbnailService& service) {
    MediaListModel model;
    app::PhotoGrid grid;
    grid.setThumbnailService(&service);
    grid.setModel(&model);
    grid.resize(1440, 760);
    model.setContent({items.begin(), items.begin() + kTiles});
    const Stopwatch watch;
    grid.show();
    QApplication::processEvents();
    report("10,000 tiles: first frame", watch.milliseconds(), 500, "ms");
    report("10,000 tiles: longest frame of the layout", longestFrameAtRest(1500), 33, "ms");
    report("10,000 tiles: longest frame, 90 px steps", longestFrame(grid, 90), 33, "ms");
    report("10,000 tiles: longest frame, pages", longestFrame(grid, 700), 33, "ms");
}

} // namespace

int main(int argc, char** argv) {
    bench::readOptions(argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    const QApplication application(argc, argv);
    app::Theme::instance().apply(app::Appearance::Dark);
    const QTemporaryDir folder;
    app::ThumbnailService service(
        app::ThumbnailCache(folder.filePath(QStringLiteral("thumbnails"))));
    std::mt19937 random(5);

    const double before = heapBytes();
    std::vector<media::ItemPointer> items;
    for (int i = 0; i < kItems; ++i)
        items.push_back(syntheticItem(i, random));

    MediaListModel model;
    app::MediaTableView view;
    view.setThumbnailService(&service);
    view.setModel(&model);
    view.resize(839, 760);
    view.show();
    QApplication::processEvents();
    const Stopwatch appending;
    for (const media::ItemPointer& item : items)
        model.appendItem(item);
    report("append one item, list on screen", appending.milliseconds() * 1000 / kItems, 20, "us");
    QApplication::processEvents();
    report("memory an item, list and view included", (heapBytes() - before) / kItems, 2048,
           "bytes");

    measureSorts(model);
    const Stopwatch refilling;
    model.setContent(items);
    QApplication::processEvents();
    report("refill after a sort", refilling.milliseconds(), 33, "ms");
    report("100,000 rows: longest frame, 96 px steps", longestFrame(view, 96), 33, "ms");
    report("100,000 rows: longest frame, pages", longestFrame(view, 7000), 33, "ms");
    measureSelections(model, view, items);
    view.hide();
    makePhotos(folder, items);
    measureGrid(items, service);
    return bench::allMet ? 0 : 1;
}
