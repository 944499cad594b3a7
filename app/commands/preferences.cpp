// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/preferences_state.h"
#include "app/commands/surroundings.h"
#include "app/theme/theme.h"
#include "app/windows/about_window.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporary_records.h"
#include "platform/workspace/ns_workspace.h"

#include <QSettings>

namespace clipheave::app {

namespace {

// The maker's endpoints.
constexpr char kSupportAddress[] = "support@clipheave.example";
constexpr char kProductPage[] = "https://clipheave.example/";

/// The stored values; the defaults in the place of what cannot be read, which is logged.
media::Preferences valuesAtStart(platform::NSUserDefaults& defaults, ActivityModel& activity) {
    if (const QString backup = defaults.setAsideWhenBroken(); !backup.isEmpty())
        activity.addLog(AppDelegate::tr("The preferences could not be read: the defaults apply, "
                                        "the file is kept as %1")
                            .arg(platform::displayPath(backup)),
                        defaults.filePath(), true);
    const auto applied = media::applyPreferencesAtStart(defaults);
    if (applied)
        return *applied;
    activity.addLog(applied.error().text(), {}, true);
    return media::readPreferences(defaults);
}

void chooseAppearance(QSettings& settings, Appearance appearance) {
    Theme::instance().apply(appearance);
    settings.setValue(QStringLiteral("appearance"), static_cast<int>(appearance));
}

/// What of the date stamp's choices is stored, by key. Deliberate: a pop-up in which nothing is
/// chosen leaves what is stored alone, and the font is stored only once the font panel was used:
/// until then the first start's label and size stand side by side as they are.
QList<std::pair<QString, QVariant>> stampChoices(const PreferencesState& state,
                                                 const PreferencesWindow& window) {
    QList<std::pair<QString, QVariant>> choices;
    if (!window.position().isEmpty())
        choices.append({QString::fromUtf16(media::kPositionKey), window.position()});
    if (!window.dateFormat().isEmpty())
        choices.append({QString::fromUtf16(media::kDateFormatKey), window.dateFormat()});
    if (state.fontChosen) {
        choices.append({QString::fromUtf16(media::kFontNameKey), state.values.currentFontname});
        choices.append({QString::fromUtf16(media::kFontSizeKey), state.values.currentFontSize});
    }
    return choices;
}

void takeStampChoices(PreferencesState& state, const PreferencesWindow& window) {
    if (!window.position().isEmpty())
        state.values.position = window.position();
    if (!window.dateFormat().isEmpty())
        state.values.dateFormat = window.dateFormat();
}

} // namespace

void AppDelegate::connectPreferences() {
    PreferencesWindow* window = m_preferencesWindow.get();
    connect(window, &PreferencesWindow::changeStoreLocation, this,
            &AppDelegate::ChangeStoreLocation);
    connect(window, &PreferencesWindow::cancel, this, &AppDelegate::CancelPreferenceSetting);
    connect(window, &PreferencesWindow::save, this, &AppDelegate::ResetPreferenceSetting);
    connect(window, &PreferencesWindow::appearanceChosen, this, [this](int index) {
        chooseAppearance(*m_surroundings->windowSettings, static_cast<Appearance>(index));
    });
    connect(window, &PreferencesWindow::showColorPanel, this, [this, window] {
        m_surroundings->stylePanels->chooseColor(window, window->fontColor(),
                                                 [this, window](const QColor& color) {
                                                     m_preferences->currentFontColor = color;
                                                     window->setStampColor(color);
                                                 });
    });
    connect(window, &PreferencesWindow::showFontPanel, this, &AppDelegate::ShowFontPanelAction);
}

QString AppDelegate::storagelocation() const {
    return m_preferences->values.storagelocation;
}

const media::Preferences& AppDelegate::preferences() const {
    return m_preferences->values;
}

void AppDelegate::applyPreferenceValues() {
    m_preferences->values = valuesAtStart(*m_surroundings->defaults, *m_activity);
    platform::removeTemporariesOfDeadProcesses();
    m_preferencesWindow->show(m_preferences->values, m_preferences->currentFontColor);
    m_window->setStorageLocation(m_preferences->values.storagelocation);
    if (m_preferences->values.firstStart)
        m_surroundings->workspace->openUrl(QUrl(QLatin1String(kProductPage)));
}

void AppDelegate::ShowPreferenceSetting() {
    m_preferencesWindow->show(m_preferences->values, m_preferences->currentFontColor);
    m_preferencesWindow->present();
}

void AppDelegate::CancelPreferenceSetting() {
    m_preferencesWindow->hide();
}

void AppDelegate::ResetPreferenceSetting() {
    const QString folder = m_preferencesWindow->storagePath();
    m_preferences->values.storagelocation = folder;
    if (const auto stored = media::setStorageLocation(*m_surroundings->defaults, folder); !stored)
        m_activity->addLog(stored.error().text(), folder, true);
    m_window->setStorageLocation(folder);
    takeStampChoices(*m_preferences, *m_preferencesWindow);
    for (const auto& [key, value] : stampChoices(*m_preferences, *m_preferencesWindow))
        if (const auto stored = m_surroundings->defaults->setObject_forKey(value, key); !stored)
            m_activity->addLog(stored.error().text(), {}, true);
    m_preferencesWindow->hide();
}

void AppDelegate::ShowFontPanelAction() {
    QFont first(QStringLiteral("Lucida Grande"));
    first.setPointSize(14);
    m_surroundings->stylePanels->showFontPanel(m_window.get(), first,
                                               [this](const QFont& font) { changeFont(font); });
}

void AppDelegate::changeFont(const QFont& font) {
    m_preferences->values.currentFontname = font.family();
    m_preferences->values.currentFontSize = font.pointSize();
    m_preferences->values.fontLabel =
        QStringLiteral("%1 %2").arg(font.family()).arg(font.pointSize());
    m_preferencesWindow->setStampFont(font.family(), font.pointSize());
    m_preferences->fontChosen = true;
}

void AppDelegate::appearanceSystem() {
    chooseAppearance(*m_surroundings->windowSettings, Appearance::System);
}

void AppDelegate::appearanceDark() {
    chooseAppearance(*m_surroundings->windowSettings, Appearance::Dark);
}

void AppDelegate::appearanceLight() {
    chooseAppearance(*m_surroundings->windowSettings, Appearance::Light);
}

void AppDelegate::ChangeStoreLocation() {
    PreferencesWindow* window = m_preferencesWindow.get();
    m_surroundings->fileChooser->chooseFolder(
        window, window->storagePath(),
        [window](const QString& folder) { window->setStoragePath(folder); });
}

void AppDelegate::ClickAbout() {
    AboutWindow::present(m_window.get());
}

void AppDelegate::CLICkSupport() {
    const QUrl draft = platform::NSWorkspace::mailDraft(QLatin1String(kSupportAddress),
                                                        QStringLiteral("ClipHeave"),
                                                        QStringLiteral("ClipHeave Feedback"));
    if (!m_surroundings->workspace->openUrl(draft))
        m_activity->addLog(tr("No mail program could be opened"), draft.toString(), true);
}

void AppDelegate::CLICkProductGuide() {
}

void AppDelegate::openStorageFolder() {
    m_surroundings->workspace->openUrl(QUrl::fromLocalFile(m_preferences->values.storagelocation));
}

} // namespace clipheave::app
