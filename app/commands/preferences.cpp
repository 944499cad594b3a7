// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/preferences_state.h"
#include "app/commands/surroundings.h"
#include "app/theme/theme.h"
#include "app/windows/about_window.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "app/windows/window_settings.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporaries.h"
#include "platform/workspace/ns_workspace.h"

#include <QSettings>

namespace clipheave::app {

namespace {

// The maker's endpoints.
constexpr char kSupportAddress[] = "support@clipheave.example";
constexpr char kProductPage[] = "https://clipheave.example/";

} // namespace

QString AppDelegate::storagelocation() const {
    return m_preferences->values.storagelocation;
}

const media::Preferences& AppDelegate::preferences() const {
    return m_preferences->values;
}

void AppDelegate::applyPreferenceValues() {
    if (const QString backup = m_surroundings->defaults->setAsideWhenBroken(); !backup.isEmpty())
        m_activity->addLog(tr("The preferences could not be read: the defaults apply, the file is "
                              "kept as %1")
                               .arg(platform::displayPath(backup)),
                           m_surroundings->defaults->filePath(), true);
    const auto applied = media::applyPreferencesAtStart(*m_surroundings->defaults);
    m_preferences->values = applied ? *applied : media::readPreferences(*m_surroundings->defaults);
    if (!applied)
        m_activity->addLog(applied.error().text(), {}, true);
    platform::removeStaleTemporaries(m_preferences->values.storagelocation);
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
    storeStampChoices();
    m_preferencesWindow->hide();
}

void AppDelegate::ShowFontPanelAction() {
    if (!m_preferences->fontPanel) {
        QFont first(QStringLiteral("Lucida Grande"));
        first.setPointSize(14);
        m_preferences->fontPanel = new QFontDialog(first, m_window.get());
        m_preferences->fontPanel->setAttribute(Qt::WA_DeleteOnClose);
        m_preferences->fontPanel->setOption(QFontDialog::NoButtons);
        connect(m_preferences->fontPanel, &QFontDialog::currentFontChanged, this,
                &AppDelegate::changeFont);
    }
    m_preferences->fontPanel->show();
    m_preferences->fontPanel->raise();
    m_preferences->fontPanel->activateWindow();
}

void AppDelegate::changeFont(const QFont& font) {
    m_preferences->values.currentFontname = font.family();
    m_preferences->values.currentFontSize = font.pointSize();
    m_preferences->values.fontLabel =
        QStringLiteral("%1 %2").arg(font.family()).arg(font.pointSize());
    m_preferencesWindow->setStampFont(font.family(), font.pointSize());
    m_preferences->fontChosen = true;
}

void AppDelegate::chooseAppearance(Appearance appearance) {
    Theme::instance().apply(appearance);
    QSettings(windowSettingsFile(), QSettings::IniFormat)
        .setValue(QStringLiteral("appearance"), static_cast<int>(appearance));
}

void AppDelegate::appearanceSystem() {
    chooseAppearance(Appearance::System);
}

void AppDelegate::appearanceDark() {
    chooseAppearance(Appearance::Dark);
}

void AppDelegate::appearanceLight() {
    chooseAppearance(Appearance::Light);
}

/// The date stamp's choices. Deliberate: a pop-up in which nothing is chosen leaves what is stored
/// alone, and the font is stored only once the font panel was used: until then the first start's
/// label and size stand side by side as they are.
void AppDelegate::storeStampChoices() {
    QList<std::pair<const char16_t*, QVariant>> choices;
    if (const QString position = m_preferencesWindow->position(); !position.isEmpty()) {
        m_preferences->values.position = position;
        choices.append({media::kPositionKey, position});
    }
    if (const QString format = m_preferencesWindow->dateFormat(); !format.isEmpty()) {
        m_preferences->values.dateFormat = format;
        choices.append({media::kDateFormatKey, format});
    }
    if (m_preferences->fontChosen) {
        choices.append({media::kFontNameKey, m_preferences->values.currentFontname});
        choices.append({media::kFontSizeKey, m_preferences->values.currentFontSize});
    }
    for (const auto& [key, value] : choices)
        if (const auto stored =
                m_surroundings->defaults->setObject_forKey(value, QString::fromUtf16(key));
            !stored)
            m_activity->addLog(stored.error().text(), {}, true);
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
