// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/command_state.h"
#include "app/commands/gps_state.h"
#include "app/commands/import_state.h"
#include "app/commands/importer.h"
#include "app/commands/item_list.h"
#include "app/commands/log_feed.h"
#include "app/commands/pane_state.h"
#include "app/commands/preferences_state.h"
#include "app/commands/rename_jobs.h"
#include "app/commands/rename_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "app/list/media_list_model.h"
#include "app/widgets/accessible_roles.h"
#include "app/windows/gps_sheet.h"
#include "app/windows/main_window.h"
#include "app/windows/map_window.h"
#include "app/windows/photo_dates_window.h"
#include "app/windows/preferences_window.h"
#include "app/windows/rename_window.h"
#include "platform/foundation/log.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/paths.h"
#include "platform/media/export/av_asset_export_session.h"
#include "platform/media/export/export_queue.h"
#include "platform/player/mpv_player.h"
#include "platform/workspace/system_version.h"

#include <QApplication>
#include <QTimer>

namespace clipheave::app {

namespace {

constexpr int kIdleAfterStart = 300; // ms

AppDelegate* s_controller = nullptr;

void observeNotifications(AppDelegate& controller) {
    using Handler = void (AppDelegate::*)(QObject*);
    // Deliberate: a media drop arrives under a name of its own and is handed on.
    static constexpr std::pair<const char16_t*, Handler> kObserved[] = {
        {u"MyClosebuttonMouseDown", &AppDelegate::MyClosebuttonMouseDownHandle},
        {u"MybuttonMouseDown", &AppDelegate::MybuttonMouseDownHandle},
        {u"PRbuttonMouseEntered", &AppDelegate::PRbuttonMouseEnteredHandle},
        {u"PRbuttonMouseExited", &AppDelegate::PRbuttonMouseExitedHandle},
        {u"NSDragOperationImageNote", &AppDelegate::PRDragOperationImageNoteHandle},
        {u"NSDragOperationMediaNote", &AppDelegate::NSDragOperationMediaNoteHandle},
        {u"NSDragOperationImageViewNote", &AppDelegate::NSDragOperationImageViewNoteHandle},
    };
    auto& center = platform::NSNotificationCenter::defaultCenter();
    for (const auto& [name, handler] : kObserved)
        center.addObserver_name(
            &controller, QString::fromUtf16(name),
            [&controller, handler = handler](QObject* object) { (controller.*handler)(object); });
}

/// Connects the requests of the window to their commands.
void connectCommands(const MainWindow& window, AppDelegate& controller) {
    const auto to = [&](auto signal, auto slot) {
        QObject::connect(&window, signal, &controller, slot);
    };
    to(&MainWindow::selectionChanged, &AppDelegate::tableViewSelectionDidChange);
    to(&MainWindow::columnClicked, &AppDelegate::tableView_didClickTableColumn);
    to(&MainWindow::pathsDropped, [&controller](const QStringList& paths) {
        controller.activity()->addLog(
            QStringLiteral("urls==%1").arg(platform::displayPath(paths.join(u", "))));
        controller.importPaths(paths);
    });
    to(&MainWindow::photosDropped, &AppDelegate::importPhotoPaths);
    to(&MainWindow::addRequested, &AppDelegate::AddMediaFileAction);
    to(&MainWindow::removeRequested, &AppDelegate::RemoveMediaFileAction);
    to(&MainWindow::commandRequested, &AppDelegate::performCommand);
    to(&MainWindow::systemCloseRequested, &AppDelegate::windowShouldClose);
    to(&MainWindow::storageFolderRequested, &AppDelegate::openStorageFolder);
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings, QObject* parent)
    : QObject(parent), m_surroundings(std::make_unique<Surroundings>(std::move(surroundings))),
      m_command(std::make_unique<CommandState>()),
      m_preferences(std::make_unique<PreferencesState>()),
      m_import(std::make_unique<ImportState>()), m_pane(std::make_unique<PaneState>()),
      m_rename(std::make_unique<RenameState>()), m_gps(std::make_unique<GpsState>()),
      m_activity(std::make_unique<ActivityModel>(m_surroundings->clock)),
      m_board(std::make_unique<JobBoard>(*m_activity)),
      m_log(std::make_unique<LogFeed>(*m_activity, *m_board)),
      m_mediaController(std::make_unique<MediaListModel>()),
      m_list(std::make_unique<ItemList>(*m_mediaController)),
      m_importer(std::make_unique<Importer>(*m_import, *m_list, *m_activity, *m_board)),
      m_renameJobs(std::make_unique<RenameJobs>(
          *m_rename, *m_activity, *m_board, *m_surroundings->workspace,
          [this](const auto& paths, const auto& change) { changeItems(paths, change); })) {
    s_controller = this;
    platform::ExportQueue::shared().giveWayToOthers();
    m_board->setListedFiles([this] { return m_list->paths(); });
    connect(m_importer.get(), &Importer::itemsRead, this,
            &AppDelegate::LoadImportedMediasonMainThread);
    connect(m_importer.get(), &Importer::finished, this, [this] {
        refreshSummary();
        Q_EMIT importFinished();
    });
    observeNotifications(*this);
}

AppDelegate::~AppDelegate() {
    m_log.reset();
    m_import->stopping = true;
    m_board->cancelAll();
    platform::AVAssetExportSession::cancelAllExports();
    // Workers hand over to this thread and wait for it: let them through until they have ended.
    while (m_import->running > 0 || !m_board->isIdle())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    platform::AVAssetExportSession::waitForAllExports();
    platform::NSNotificationCenter::defaultCenter().removeObserver(this);
    if (s_controller == this)
        s_controller = nullptr;
}

AppDelegate* AppDelegate::shared() {
    return s_controller;
}

void AppDelegate::getSystemVersionMajor_minor_bugFix(unsigned* major, unsigned* minor,
                                                     unsigned* bugFix) {
    platform::SystemVersion version{10, 0, 0};
    if (const auto found = platform::systemVersion())
        version = *found;
    else
        platform::log(platform::LogLevel::Warning,
                      QStringLiteral("Unable to obtain system version: %1")
                          .arg(static_cast<long>(found.error().code)));
    if (major)
        *major = version.major;
    if (minor)
        *minor = version.minor;
    if (bugFix)
        *bugFix = version.bugFix;
}

void AppDelegate::awakeFromNib() {
    installAccessibleRoles();
    getSystemVersionMajor_minor_bugFix(nullptr, &m_command->macOsVer, nullptr);
    m_window = std::make_unique<MainWindow>(*m_mediaController, *m_activity,
                                            *m_surroundings->windowSettings);
    m_preferencesWindow = std::make_unique<PreferencesWindow>(m_window.get());
    m_renameWindow = std::make_unique<RenameWindow>(m_window.get());
    m_gpsSheet = std::make_unique<GpsSheet>(m_window.get());
    m_mapWindow = std::make_unique<MapWindow>(m_window.get());
    m_photoDatesWindow = std::make_unique<PhotoDatesWindow>(m_window.get());
    connectCommands(*m_window, *this);
    connectPanes();
    connectPhotoPane();
    connectPreferences();
    connectRename();
    connectGps();
}

void AppDelegate::applicationDidFinishLaunching() {
    applyPreferenceValues();
    m_window->setTitleButtonImages(m_command->macOsVer > 9);
    m_window->setJobProgressVisible(false);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    // The player's library takes some 100 ms to load: after the first frame, not before it and not
    // when the first video is chosen.
    QTimer::singleShot(kIdleAfterStart, this, [] { platform::MpvPlayer::preload(); });
}

bool AppDelegate::windowShouldClose() {
    QApplication::quit();
    return true;
}

void AppDelegate::CloseTheMainWindow() {
    const int answer = m_surroundings->alerts->ask(
        m_window.get(), tr("Are you sure you want to Exit ?"), {}, {tr(" Exit "), tr("Cancel")});
    if (answer == 0)
        QApplication::quit();
}

void AppDelegate::startProgreess() {
    m_window->setCameraProgressVisible(true);
}

void AppDelegate::endProgress() {
    m_window->setCameraProgressVisible(false);
}

} // namespace clipheave::app
