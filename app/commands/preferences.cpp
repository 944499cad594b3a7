// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/windows/about_window.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "platform/foundation/file_manager.h"
#include "platform/workspace/ns_workspace.h"

#include <QFileDialog>

namespace clipheave::app {

namespace {

// The maker's endpoints.
constexpr char kSupportAddress[] = "support@clipheave.example";
constexpr char kProductPage[] = "https://clipheave.example/";

} // namespace

void AppDelegate::applyPreferenceValues() {
    const auto applied = media::applyPreferencesAtStart(*m_defaults);
    m_preferences = applied ? *applied : media::readPreferences(*m_defaults);
    if (!applied)
        m_activity->addLog(applied.error().text(), {}, true);
    platform::removeStaleTemporaries(m_preferences.storagelocation);
    m_preferencesWindow->show(m_preferences, m_currentFontColor);
    m_window->setStorageLocation(m_preferences.storagelocation);
    if (m_preferences.firstStart)
        platform::NSWorkspace::sharedWorkspace().openURL(QUrl(QLatin1String(kProductPage)));
}

void AppDelegate::ShowPreferenceSetting() {
    m_preferencesWindow->show(m_preferences, m_currentFontColor);
    m_preferencesWindow->present();
}

void AppDelegate::CancelPreferenceSetting() {
    m_preferencesWindow->hide();
}

void AppDelegate::ResetPreferenceSetting() {
    const QString folder = m_preferencesWindow->storagePath();
    m_preferences.storagelocation = folder;
    if (const auto stored = media::setStorageLocation(*m_defaults, folder); !stored)
        m_activity->addLog(stored.error().text(), folder, true);
    m_window->setStorageLocation(folder);
    m_preferencesWindow->hide();
}

void AppDelegate::ChangeStoreLocation() {
    auto* panel = new QFileDialog(m_preferencesWindow.get());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setDirectory(m_preferencesWindow->storagePath());
    connect(panel, &QFileDialog::fileSelected, m_preferencesWindow.get(),
            &PreferencesWindow::setStoragePath);
    panel->open();
}

void AppDelegate::ClickAbout() {
    AboutWindow::present(m_window.get());
}

void AppDelegate::CLICkSupport() {
    const QUrl draft = platform::NSWorkspace::mailDraft(QLatin1String(kSupportAddress),
                                                        QStringLiteral("ClipHeave"),
                                                        QStringLiteral("ClipHeave Feedback"));
    if (!platform::NSWorkspace::sharedWorkspace().openURL(draft))
        m_activity->addLog(tr("No mail program answers"), draft.toString(), true);
}

void AppDelegate::CLICkProductGuide() {
}

void AppDelegate::openStorageFolder() {
    platform::NSWorkspace::sharedWorkspace().openURL(
        QUrl::fromLocalFile(m_preferences.storagelocation));
}

} // namespace clipheave::app
