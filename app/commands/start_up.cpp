// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/import_state.h"
#include "app/commands/list_state.h"
#include "app/commands/pane_state.h"
#include "app/commands/preferences_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "app/list/media_list_model.h"
#include "app/widgets/accessible_roles.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "app/windows/rename_window.h"
#include "platform/foundation/log.h"
#include "platform/foundation/notification_center.h"
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

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings, QObject* parent)
    : QObject(parent), m_surroundings(std::make_unique<Surroundings>(std::move(surroundings))),
      m_preferences(std::make_unique<PreferencesState>()),
      m_import(std::make_unique<ImportState>()), m_list(std::make_unique<ListState>()),
      m_pane(std::make_unique<PaneState>()),
      m_activity(std::make_unique<ActivityModel>(m_surroundings->clock)),
      m_board(std::make_unique<JobBoard>(*m_activity)),
      m_mediaController(std::make_unique<MediaListModel>()) {
    s_controller = this;
    platform::ExportQueue::shared().giveWayToOthers();
    m_board->setListedFiles([this] { return allPaths(); });
    observeNotifications();
    takeLogLines();
}

AppDelegate::~AppDelegate() {
    m_logLines.reset();
    m_stopping = true;
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

void AppDelegate::observeNotifications() {
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
            this, QString::fromUtf16(name),
            [this, handler = handler](QObject* object) { (this->*handler)(object); });
}

/// What the layers below have to say comes into the activity log, whichever thread says it.
void AppDelegate::takeLogLines() {
    m_logLines = std::make_unique<platform::LogSubscription>(
        platform::LogLevel::Info, [this](const platform::LogLine& line) {
            QMetaObject::invokeMethod(
                this, [this, line] { takeLogLine(line); }, Qt::QueuedConnection);
        });
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
    getSystemVersionMajor_minor_bugFix(nullptr, &m_macOsVer, nullptr);
    m_window = std::make_unique<MainWindow>(*m_mediaController, *m_activity);
    m_preferencesWindow = std::make_unique<PreferencesWindow>(m_window.get());
    m_renameWindow = std::make_unique<RenameWindow>(m_window.get());
    connectWindow();
    connectRename();
}

void AppDelegate::applicationDidFinishLaunching() {
    applyPreferenceValues();
    m_window->setTitleButtonImages(m_macOsVer > 9);
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
