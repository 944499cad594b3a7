// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/grab.h"

#include "app/AppDelegate.h"
#include "app/activity/activity_panel.h"
#include "app/list/media_list_model.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPixmap>

#include <cstdio>

namespace clipheave::app {

namespace {

constexpr int kSettleTime = 1500; // ms for thumbnails, player and animations

void settle(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

/// Row of the first item that a test accepts, -1 when there is none.
template <class Test> int rowWhere(const AppDelegate& controller, Test test) {
    const auto& content = controller.mediaController()->content();
    for (std::size_t row = 0; row < content.size(); ++row)
        if (test(*content[row]))
            return static_cast<int>(row);
    return -1;
}

void selectVideo(AppDelegate& controller) {
    controller.mainWindow()->selectRow(rowWhere(controller, [](const media::IKImageItem& item) {
        return media::MediaKind::isVideo(item.filePath) && !item.latitudeFormat.isEmpty();
    }));
}

void selectAudio(AppDelegate& controller) {
    controller.mainWindow()->selectRow(rowWhere(controller, [](const media::IKImageItem& item) {
        return media::MediaKind::isAudio(item.filePath) && !item.fileTitle.isEmpty();
    }));
}

/// The window with whatever stands above it (menus, dialogs), which a grab of the window leaves
/// out.
QPixmap grabWithWindows(AppDelegate& controller, const QList<QWidget*>& above) {
    MainWindow* window = controller.mainWindow();
    QPixmap picture = window->grab();
    QPainter painter(&picture);
    for (QWidget* widget : above)
        painter.drawPixmap(widget->pos() - window->pos(), widget->grab());
    return picture;
}

QList<QWidget*> bringUp(AppDelegate& controller, const QString& view) {
    MainWindow* window = controller.mainWindow();
    if (view == u"audio") {
        selectAudio(controller);
    } else if (view == u"photos") {
        window->showPhotos();
    } else if (view != u"empty") {
        selectVideo(controller);
    }
    if (view == u"activity")
        window->toggleActivity();
    if (view == u"preferences") {
        controller.ShowPreferenceSetting();
        return {controller.preferencesWindow()};
    }
    if (view == u"menus") {
        window->popUpMenu(QStringLiteral("videoEditMenu"),
                          window->findChild<QObject*>(QStringLiteral("videoEditBtn")));
        return {window->menu(QStringLiteral("videoEditMenu"))};
    }
    return {};
}

void importAll(AppDelegate& controller, const GrabRequest& request) {
    if (request.paths.isEmpty() || request.view == u"empty")
        return;
    if (request.view == u"photos")
        controller.importPhotoPaths(request.paths);
    else
        controller.importPaths(request.paths);
    while (controller.isImporting())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

} // namespace

QStringList grabViewNames() {
    return {QStringLiteral("video"), QStringLiteral("audio"),    QStringLiteral("photos"),
            QStringLiteral("empty"), QStringLiteral("activity"), QStringLiteral("preferences"),
            QStringLiteral("menus")};
}

int grabView(AppDelegate& controller, const GrabRequest& request) {
    if (!grabViewNames().contains(request.view)) {
        std::fprintf(stderr, "clipheave: no view of this name; there are: %s\n",
                     qPrintable(grabViewNames().join(QStringLiteral(", "))));
        return 2;
    }
    const QStringList sides = request.size.split(u'x');
    controller.mainWindow()->resize(sides.value(0).toInt(), sides.value(1).toInt());
    importAll(controller, request);
    const QList<QWidget*> above = bringUp(controller, request.view);
    settle(kSettleTime);
    const bool written = grabWithWindows(controller, above).save(request.file, "PNG");
    if (!written)
        std::fprintf(stderr, "clipheave: %s could not be written\n", qPrintable(request.file));
    return written ? 0 : 1;
}

} // namespace clipheave::app
