// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the whole window: an import with the list on screen, the start up to the first frame,
// the choice of another video. Prints rows as list_bench does.
// usage: window_bench import FOLDER | frame STARTED | select VIDEO VIDEO… | jobs VIDEO VIDEO… |
// grid FOLDER
//   STARTED: nanoseconds of the monotonic clock when the program was started
#include "app/AppDelegate.h"
#include "app/commands/surroundings.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/list/photo_tile_delegate.h"
#include "app/panes/detail_pane.h"
#include "app/panes/player_view.h"
#include "app/panes/video_pane_view.h"
#include "app/theme/theme.h"
#include "app/windows/main_window.h"
#include "bench/report.h"
#include "platform/media/export/av_asset_export_session.h"
#include "platform/player/mpv_player.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

using namespace clipheave;
using bench::Stopwatch;

constexpr int kMostWait = 10'000;    // ms
constexpr int kMostImport = 600'000; // ms
constexpr int kSettled = 1000;       // ms
constexpr int kChoices = 12;

/// Ends the program once the window has painted itself.
class FirstFrame : public QObject {
public:
    explicit FirstFrame(qint64 started) : m_started(started) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Paint || m_seen)
            return false;
        m_seen = true;
        // After the painting of all its parts, which follows this event.
        QMetaObject::invokeMethod(
            watched, [this] { finish(); }, Qt::QueuedConnection);
        return false;
    }

private:
    void finish() const {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const double elapsed = static_cast<double>(now.tv_sec) * 1e3 +
                               static_cast<double>(now.tv_nsec) / 1e6 -
                               static_cast<double>(m_started) / 1e6;
        bench::report("start to the first frame, warm", elapsed, 500, "ms");
        QApplication::quit();
    }

    qint64 m_started;
    bool m_seen = false;
};

template <class Done> bool waitFor(Done done, int most = kMostWait) {
    QElapsedTimer timer;
    timer.start();
    QTimer tick; // ends the waiting below when nothing else does
    tick.start(1);
    while (!done() && timer.elapsed() < most)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

bool importAll(app::AppDelegate& controller, const QStringList& paths) {
    controller.importPaths(paths);
    return waitFor([&] { return !controller.isImporting(); }, kMostImport);
}

void measureRemoval(app::AppDelegate& controller) {
    app::MainWindow* window = controller.mainWindow();
    const Stopwatch selecting;
    window->selectAll();
    QApplication::processEvents();
    bench::tell("select all", selecting.milliseconds(), "ms");
    auto* table = window->findChild<app::MediaTableView*>();
    table->selectionModel()->select(table->model()->index(0, 0),
                                    QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    QApplication::processEvents();
    const Stopwatch removing;
    controller.RemoveMediaFileAction();
    QApplication::processEvents();
    bench::tell("remove all but one", removing.milliseconds(), "ms");
}

int measureImport(app::AppDelegate& controller, const QString& folder) {
    QApplication::processEvents();
    const Stopwatch watch;
    const bool done = importAll(controller, {folder});
    QApplication::processEvents();
    bench::tell("import with the window open", watch.milliseconds(), "ms");
    if (!done || controller.localPhotoItemArray().empty())
        return 1;
    measureRemoval(controller);
    return controller.localPhotoItemArray().size() == 1 ? 0 : 1;
}

/// Returns whether every tile on the screen has its image.
bool showsAllTiles(app::PhotoGrid& grid) {
    const QRect shown = grid.viewport()->rect();
    bool any = false;
    for (int row = 0; row < grid.model()->rowCount(); ++row) {
        const QRect tile = grid.visualRect(grid.model()->index(row, 0));
        if (!tile.intersects(shown)) {
            if (any)
                break;
            continue;
        }
        any = true;
        const auto item = grid.listModel()->itemAt(row);
        if (!item || grid.thumbnailService()->image(*item, app::ThumbnailShape::ofTile()).isNull())
            return false;
    }
    return any;
}

/// Photos into the grid, whose thumbnails nobody has made before: the first screen, then all, a
/// screen at a time.
int measureGrid(app::AppDelegate& controller, const QString& folder) {
    QDir(app::ThumbnailCache::defaultFolder()).removeRecursively(); // that of tests alone
    app::MainWindow* window = controller.mainWindow();
    auto* grid = window->findChild<app::PhotoGrid*>();
    const Stopwatch watch;
    controller.importPhotoPaths({folder});
    QMetaObject::invokeMethod(window, "showPhotos");
    if (!waitFor([&] { return showsAllTiles(*grid); }))
        return 1;
    bench::report("first screen of the photo grid", watch.milliseconds(), 300, "ms");
    if (!waitFor([&] { return !controller.isImporting(); }, kMostImport))
        return 1;
    QScrollBar* bar = grid->verticalScrollBar();
    while (bar->value() < bar->maximum()) {
        bar->setValue(bar->value() + bar->pageStep());
        if (!waitFor([&] { return showsAllTiles(*grid); }))
            return 1;
    }
    bench::tell("all tiles of the photo grid, scrolled", watch.milliseconds(), "ms");
    return 0;
}

/// Medians over several choices; the first, for which the player itself is made, is separate.
int measureSelection(app::AppDelegate& controller, const QStringList& videos) {
    if (!importAll(controller, videos))
        return 1;
    app::MainWindow* window = controller.mainWindow();
    platform::MpvPlayer* player = window->findChild<app::VideoPaneView*>()->player()->player();
    std::vector<double> panes, frames;
    const int rows = static_cast<int>(controller.localPhotoItemArray().size());
    for (int i = 0; i < kChoices; ++i) {
        bool seen = false;
        const auto connection = QObject::connect(player, &platform::MpvPlayer::frameReady, player,
                                                 [&] { seen = !player->videoSize().isEmpty(); });
        const Stopwatch watch;
        window->selectRow(i % rows);
        window->detailPane()->repaint();
        const double filled = watch.milliseconds();
        const bool came = waitFor([&] { return seen; });
        const double shown = watch.milliseconds();
        QObject::disconnect(connection);
        if (!came)
            return 1;
        if (i == 0) {
            bench::tell("first video: first frame", shown, "ms");
            continue;
        }
        panes.push_back(filled);
        frames.push_back(shown);
    }
    std::sort(panes.begin(), panes.end());
    std::sort(frames.begin(), frames.end());
    bench::report("select another video: pane filled, slowest", panes.back(), 50, "ms");
    bench::report("select another video: first frame, median", frames[frames.size() / 2], 250,
                  "ms");
    bench::report("select another video: first frame, slowest", frames.back(), 250, "ms");
    return 0;
}

/// Key presses in a field while the videos are rotated all at once: from the press, which another
/// thread makes, to the end of its handling.
int measureJobs(app::AppDelegate& controller, const QStringList& videos) {
    if (!importAll(controller, videos))
        return 1;
    platform::AVAssetExportSession::setMaximumConcurrentExports(static_cast<int>(videos.size()));
    app::MainWindow* window = controller.mainWindow();
    window->selectRow(0);
    window->selectAll();
    // Choosing a video, its player and its first frame are measured separately.
    QElapsedTimer settling;
    settling.start();
    waitFor([&] { return settling.elapsed() > kSettled; });
    auto* field = window->findChild<QLineEdit*>(QStringLiteral("mediaTitle"));
    std::vector<double> handled;
    bool done = false;
    QObject::connect(&controller, &app::AppDelegate::saveFinished, window, [&] { done = true; });
    controller.performCommand(QStringLiteral("RotateVideoMediaFileAction"),
                              QStringLiteral("right (clockwise) by 90 degrees"));
    std::atomic<bool> pressing{true};
    std::thread presser([&] {
        while (pressing) {
            QMetaObject::invokeMethod(
                field,
                [&, watch = Stopwatch()] {
                    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, {}, QStringLiteral("a"));
                    QApplication::sendEvent(field, &press);
                    handled.push_back(watch.milliseconds());
                },
                Qt::QueuedConnection);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    while (!done)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    pressing = false;
    presser.join();
    QApplication::processEvents();
    std::sort(handled.begin(), handled.end());
    if (handled.empty())
        return 1;
    bench::tell("key press while four exports run, median", handled[handled.size() / 2], "ms");
    bench::report("key press while four exports run, slowest", handled.back(), 50, "ms");
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    QStandardPaths::setTestModeEnabled(true);
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // the player asks for it
    const QStringList arguments = QApplication::arguments().mid(1);
    const QString what = arguments.value(0);
    const QTemporaryDir folder;
    auto defaults =
        std::make_unique<platform::NSUserDefaults>(folder.filePath(QStringLiteral("prefs.conf")));
    if (!defaults->setObject_forKey(folder.filePath(QStringLiteral("out")),
                                    QStringLiteral("storagePath")))
        return 2;
    app::Theme::instance().apply(app::Appearance::Dark);
    app::AppDelegate controller(app::desktopSurroundings(
        std::move(defaults),
        std::make_shared<QSettings>(folder.filePath(QStringLiteral("window.conf")),
                                    QSettings::IniFormat)));
    controller.awakeFromNib();
    FirstFrame frame(arguments.value(1).toLongLong());
    if (what == u"frame")
        controller.mainWindow()->installEventFilter(&frame);
    controller.applicationDidFinishLaunching();
    int result = 0;
    if (what == u"frame")
        result = QApplication::exec();
    else if (what == u"import")
        result = measureImport(controller, arguments.value(1));
    else if (what == u"select")
        result = measureSelection(controller, arguments.mid(1));
    else if (what == u"grid")
        result = measureGrid(controller, arguments.value(1));
    else if (what == u"jobs")
        result = measureJobs(controller, arguments.mid(1));
    else
        return 2;
    return result != 0 || !bench::allMet ? 1 : 0;
}
