// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/grab.h"

#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/activity/activity_panel.h"
#include "app/grab_states.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/panes/detail_pane.h"
#include "app/panes/player_view.h"
#include "app/widgets/alert_box.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/image_button.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_window.h"
#include "platform/player/mpv_player.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
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
constexpr int kSeekTime = 700;    // ms

void settle(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

/// Returns the row of the first item that a test accepts, -1 when there is none.
template <class Test> int rowWhere(const AppDelegate& controller, Test test) {
    const auto& content = controller.mediaController()->content();
    for (std::size_t row = 0; row < content.size(); ++row)
        if (test(*content[row]))
            return static_cast<int>(row);
    return -1;
}

void selectVideo(AppDelegate& controller) {
    controller.mainWindow()->selectRow(rowWhere(controller, [](const media::IKImageItem& item) {
        return media::MediaKind::isVideo(item.filePath) && !item.latitudeFormat.isEmpty() &&
               !item.fileImage.isNull();
    }));
}

void selectAudio(AppDelegate& controller) {
    controller.mainWindow()->selectRow(rowWhere(controller, [](const media::IKImageItem& item) {
        return media::MediaKind::isAudio(item.filePath) && !item.fileComposer.isEmpty();
    }));
}

/// The first rows of a list, the current one among them.
void selectSome(QAbstractItemView& view, int count) {
    const QModelIndex last = view.model()->index(count - 1, 0);
    view.selectionModel()->select(QItemSelection(view.model()->index(0, 0), last),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void edit(AppDelegate& controller, const char* field, const char* text) {
    auto* line = controller.mainWindow()->findChild<QLineEdit*>(QLatin1String(field));
    line->setText(QString::fromUtf8(text));
    line->setCursorPosition(0);
}

/// What stands above the window, and where on the screen.
struct Above {
    QWidget* widget;
    QPoint position;
};

/// The window with whatever stands above it (menus, dialogs), which a grab of the window leaves
/// out.
QPixmap grabWithWindows(AppDelegate& controller, const QList<Above>& above) {
    MainWindow* window = controller.mainWindow();
    QPixmap image = window->grab();
    QPainter painter(&image);
    for (const Above& part : above)
        painter.drawPixmap(part.position - window->pos(), part.widget->grab());
    return image;
}

/// Menus are placed by hand: the screen of a grab may be smaller than the window.
QList<Above> openMenus(AppDelegate& controller) {
    MainWindow* window = controller.mainWindow();
    auto* button = window->findChild<ImageButton*>(QStringLiteral("videoEditBtn"));
    window->popUpMenu(QStringLiteral("videoEditMenu"), button);
    QMenu* menu = window->menu(QStringLiteral("videoEditMenu"));
    button->setDown(true);
    QAction* rotate = menu->actions().constFirst();
    menu->setActiveAction(rotate);
    QMenu* submenu = rotate->menu();
    submenu->popup({});
    const QPoint place = button->menuPosition();
    QPoint beside(menu->width() - 3, menu->actionGeometry(rotate).top() - 5);
    if ((place + beside).x() + submenu->width() >
        window->geometry().right()) // as at a screen's end
        beside.setX(3 - submenu->width());
    return {{menu, place}, {submenu, place + beside}};
}

QList<Above> openAlert(AppDelegate& controller) {
    MainWindow* window = controller.mainWindow();
    auto* alert = new AlertBox(window, QStringLiteral("Are you sure you want to Exit ?"), {},
                               {QStringLiteral(" Exit "), QStringLiteral("Cancel")});
    alert->show();
    const QPoint inset((window->width() - alert->width()) / 2,
                       (window->height() - alert->height()) / 2);
    return {{alert, window->pos() + inset}};
}

QList<Above> centredDialog(AppDelegate& controller, const char* name) {
    MainWindow* window = controller.mainWindow();
    auto* dialog = window->findChild<QWidget*>(QLatin1String(name));
    if (dialog == nullptr)
        return {};
    return {{dialog, {window->x() + (window->width() - dialog->width()) / 2, dialog->y()}}};
}

/// Into the video or audio, so that the line and the waveform show what is played.
void seekPlayers(AppDelegate& controller) {
    constexpr double kPart = 0.31;
    for (const PlayerView* view : controller.mainWindow()->findChildren<PlayerView*>())
        if (view->player()->isLoaded())
            view->player()->seek(view->player()->duration() * kPart);
}

/// The rename window with two tags before the existing names, dated and numbered.
QList<Above> openRename(AppDelegate& controller) {
    selectSome(*controller.mainWindow()->table(), 5);
    controller.ShowRenameWindowAction();
    controller.ClickRenamewithMetadataAction();
    const RenameControls& controls = controller.renameWindow()->controls();
    for (const char* tag : {"Title", "Camera Date"}) {
        controls.addTagsButton->setCurrentText(QLatin1String(tag));
        controller.InsertPhotoTagsFileNameAction();
    }
    controls.renameDateFormatBtn->setCurrentText(QStringLiteral("YYYY_MM_DD HH.MM.ss"));
    controls.seqNumBtn->setChecked(true);
    return centredDialog(controller, "renameWindow");
}

/// The position sheet, or the map window, of the first photo with a position and those behind it.
QList<Above> openPosition(AppDelegate& controller, bool mapAlone) {
    MainWindow* window = controller.mainWindow();
    window->showPhotos();
    const int row = rowWhere(
        controller, [](const media::IKImageItem& item) { return !item.latitudeFormat.isEmpty(); });
    window->selectRow(row);
    if (mapAlone) {
        controller.ShowMapAction();
        return centredDialog(controller, "mapWindow");
    }
    QAbstractItemView& grid = *window->photoGrid();
    for (int further = row + 1; further < row + 3; ++further)
        grid.selectionModel()->select(grid.model()->index(further, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    controller.EditeGPSExifDataPhoto();
    return centredDialog(controller, "changeGPSWindow");
}

/// Three photos in their pane, the current one with a position; `changed`: as after typing.
void openPhotoPane(AppDelegate& controller, bool changed) {
    MainWindow* window = controller.mainWindow();
    window->showPhotos();
    const int row = rowWhere(controller, [](const media::IKImageItem& item) {
        return !item.latitudeFormat.isEmpty() && !item.fileDescription.isEmpty();
    });
    window->selectRow(row);
    selectSome(*window->photoGrid(), 3);
    controller.StartEditViewAction();
    if (!changed)
        return window->photoGrid()->setFocus();
    for (const auto& [field, text] :
         {std::pair("titlelab", "Stacks at last light"), {"keywordslab", "basalt, surf, dusk"}}) {
        auto* line = window->findChild<EditField*>(QLatin1String(field));
        Q_EMIT line->editingBegun();
        line->setText(QString::fromUtf8(text));
        line->setCursorPosition(0);
    }
}

void waitForJobs(AppDelegate& controller) {
    while (controller.isImporting() || controller.activity()->newestRunning() != nullptr)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

/// A save of the first files; into the storage folder that the caller named, never the user's.
void saveSome(AppDelegate& controller, const GrabRequest& request) {
    if (!request.mayWrite)
        return;
    selectSome(*controller.mainWindow()->table(), 5);
    edit(controller, "mediaAlumArtis", "Ring Road");
    QMetaObject::invokeMethod(controller.mainWindow()->detailPane(), "fieldEditingBegan",
                              Q_ARG(QString, QStringLiteral("mediaAlumArtis")));
    controller.SaveMeidaFileChangesAction();
    waitForJobs(controller);
}

QList<Above> bringUp(AppDelegate& controller, const GrabRequest& request) {
    MainWindow* window = controller.mainWindow();
    const QString& view = request.view;
    if (view == u"photos") {
        window->showPhotos();
        window->selectRow(0);
        return {};
    }
    if (view == u"photo-dates") {
        openPhotoPane(controller, false);
        controller.ChangeDateExifFromPhoto();
        return centredDialog(controller, "changePhotoDateWindow");
    }
    if (view == u"gps" || view == u"map")
        return openPosition(controller, view == u"map");
    if (view == u"photo-edit" || view == u"photo-changed") {
        openPhotoPane(controller, view == u"photo-changed");
        return {};
    }
    if (view == u"empty")
        return {};
    if (view == u"sorted")
        controller.tableView_didClickTableColumn(0);
    view == u"audio" ? selectAudio(controller) : selectVideo(controller);
    if (view == u"changed" || view == u"sorted")
        selectSome(*window->table(), 3);
    if (view == u"changed") {
        edit(controller, "mediaTitle", "Reynisfjara before the storm");
        edit(controller, "mediakeywords", "drone, sea stacks");
    }
    if (view == u"activity" || view == u"failed") {
        saveSome(controller, request);
        window->activityPanel()->setOpen(true);
    }
    if (view == u"preferences") {
        controller.ShowPreferenceSetting();
        return centredDialog(controller, "preferenceWindow");
    }
    if (view == u"rename")
        return openRename(controller);
    if (view == u"about") {
        controller.ClickAbout();
        return centredDialog(controller, "aboutWindow");
    }
    if (view == u"alert")
        return openAlert(controller);
    return view == u"menus" ? openMenus(controller) : QList<Above>();
}

bool showsPhotoGrid(const QString& view) {
    return view.startsWith(u"photo") || view == u"gps" || view == u"map";
}

void importAll(AppDelegate& controller, const GrabRequest& request) {
    if (request.paths.isEmpty() || request.view == u"empty")
        return;
    QStringList paths = request.paths;
    if (request.view == u"failed") // a file that was there when it was chosen
        paths.append(paths.constFirst() + QStringLiteral("/Iceland/aurora-camp-night.mp4"));
    if (showsPhotoGrid(request.view))
        controller.importPhotoPaths(paths);
    else
        controller.importPaths(paths);
    waitForJobs(controller);
}

} // namespace

QStringList grabViewNames() {
    return {
        QStringLiteral("video"),      QStringLiteral("audio"),      QStringLiteral("photos"),
        QStringLiteral("empty"),      QStringLiteral("sorted"),     QStringLiteral("changed"),
        QStringLiteral("activity"),   QStringLiteral("failed"),     QStringLiteral("preferences"),
        QStringLiteral("rename"),     QStringLiteral("menus"),      QStringLiteral("about"),
        QStringLiteral("alert"),      QStringLiteral("states"),     QStringLiteral("gps"),
        QStringLiteral("map"),        QStringLiteral("photo-edit"), QStringLiteral("photo-changed"),
        QStringLiteral("photo-dates")};
}

int grabView(AppDelegate& controller, const GrabRequest& request) {
    if (!grabViewNames().contains(request.view)) {
        std::fprintf(stderr, "clipheave: no view of this name; there are: %s\n",
                     qPrintable(grabViewNames().join(QStringLiteral(", "))));
        return 2;
    }
    const QStringList sides = request.size.split(u'x');
    controller.mainWindow()->setKeepsLayout(false);
    controller.mainWindow()->resize(sides.value(0).toInt(), sides.value(1).toInt());
    QPixmap image;
    if (request.view == u"states") {
        image = grabStates();
    } else {
        importAll(controller, request);
        const QList<Above> above = bringUp(controller, request);
        settle(kSettleTime);
        seekPlayers(controller);
        settle(kSeekTime);
        image = grabWithWindows(controller, above);
    }
    const bool written = image.save(request.file, "PNG");
    if (!written)
        std::fprintf(stderr, "clipheave: %s could not be written\n", qPrintable(request.file));
    return written ? 0 : 1;
}

} // namespace clipheave::app
