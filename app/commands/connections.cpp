// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/activity/activity_panel.h"
#include "app/commands/pane_state.h"
#include "app/commands/preferences_state.h"
#include "app/commands/surroundings.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "media/fields.h"
#include "metadata/video_metadata.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"

namespace clipheave::app {

void AppDelegate::connectWindow() {
    MainWindow* window = m_window.get();
    connect(window, &MainWindow::selectionChanged, this, &AppDelegate::tableViewSelectionDidChange);
    connect(window, &MainWindow::columnClicked, this, &AppDelegate::tableView_didClickTableColumn);
    connect(window, &MainWindow::pathsDropped, this, [this](const QStringList& paths) {
        m_activity->addLog(
            QStringLiteral("urls==%1").arg(platform::displayPath(paths.join(u", "))));
        importPaths(paths);
    });
    connect(window, &MainWindow::photosDropped, this, &AppDelegate::importPhotoPaths);
    connect(window, &MainWindow::addRequested, this, &AppDelegate::AddMediaFileAction);
    connect(window, &MainWindow::removeRequested, this, &AppDelegate::RemoveMediaFileAction);
    connect(window, &MainWindow::commandRequested, this, &AppDelegate::performCommand);
    connect(window, &MainWindow::systemCloseRequested, this, &AppDelegate::windowShouldClose);
    connect(window, &MainWindow::storageFolderRequested, this, &AppDelegate::openStorageFolder);
    connectPanes();
    connectPreferences();
}

void AppDelegate::connectPanes() {
    DetailPane* pane = m_window->detailPane();
    pane->setLocationTextRule(&metadata::locationText);
    connect(pane, &DetailPane::fieldEditingBegan, this,
            [this](const QString& field) { control_textShouldBeginEditing(field); });
    connect(pane, &DetailPane::revealRequested, this, &AppDelegate::revealCurrentItem);
    connect(pane, &DetailPane::artworkChosen, this, &AppDelegate::takeArtwork);
    connect(pane, &DetailPane::durationKnown, this, [this](double seconds) {
        if (!m_pane->shownItem || !m_pane->shownItem->fileduratStr.isEmpty())
            return;
        changeItems({m_pane->shownItem->filePath}, [seconds](media::IKImageItem& item) {
            item.fileduration = seconds;
            item.fileduratStr = getMediaDuration(static_cast<int>(seconds));
        });
    });
    ActivityPanel* panel = m_window->activityPanel();
    connect(panel, &ActivityPanel::revealRequested, this,
            [this](const QStringList& paths) { m_surroundings->workspace->selectFiles(paths); });
}

void AppDelegate::connectPreferences() {
    PreferencesWindow* window = m_preferencesWindow.get();
    connect(window, &PreferencesWindow::changeStoreLocation, this,
            &AppDelegate::ChangeStoreLocation);
    connect(window, &PreferencesWindow::cancel, this, &AppDelegate::CancelPreferenceSetting);
    connect(window, &PreferencesWindow::save, this, &AppDelegate::ResetPreferenceSetting);
    connect(window, &PreferencesWindow::appearanceChosen, this,
            [this](int index) { chooseAppearance(static_cast<Appearance>(index)); });
    connect(window, &PreferencesWindow::fontColorChosen, this,
            [this](const QColor& color) { m_preferences->currentFontColor = color; });
    connect(window, &PreferencesWindow::showFontPanel, this, &AppDelegate::ShowFontPanelAction);
}

media::ChangeFlags AppDelegate::changeFlags() const {
    return m_pane->flags;
}

QPointF AppDelegate::currentCoords() const {
    return m_pane->currentCoords;
}

bool AppDelegate::control_textShouldBeginEditing(const QString& field) {
    for (const media::VideoFormField& row : media::kVideoFormFields)
        if (field == QLatin1String(row.objectName) && row.group)
            m_pane->flags.*row.group = true;
    for (const media::AudioField& row : media::kAudioFields)
        if (field == QLatin1String(row.objectName) && row.group)
            m_pane->flags.*row.group = true;
    if (field == u"audioCreateDatelab")
        m_pane->flags.cameraInfoChange = true;
    // Deliberate: the altitude sets no flag.
    if (field == u"mediaLatitude" || field == u"mediaLongtitude") {
        m_pane->flags.gpsInfoChange = true;
        const media::VideoPane pane = m_window->detailPane()->videoPane();
        m_pane->currentCoords = {platform::doubleValue(pane.texts.mediaLatitude),
                                 platform::doubleValue(pane.texts.mediaLongtitude)};
    }
    return true;
}

} // namespace clipheave::app
