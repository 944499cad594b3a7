// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/commands/surroundings.h"
#include "tests/testkit/testkit.h"

#include <QColor>
#include <QFont>
#include <QMimeData>
#include <QSettings>

namespace clipheave::app {

/// A desktop that replies as a test wants and keeps what it was asked.
class FakeDesktop : public Alerts,
                    public FileChooser,
                    public StylePanels,
                    public Pasteboard,
                    public Workspace {
public:
    int alertAnswer = 0;
    QStringList chosenPaths; ///< what the user chooses next; none: cancels
    QColor chosenColor;      ///< none: cancels
    bool opensUrls = true;
    QMimeData pasteboard;
    QDateTime now = QDateTime::currentDateTime();

    QStringList alerts;                   ///< messages
    QStringList alertTexts;               ///< what stands below them, and the buttons, by lines
    QList<OpenPanel::Mode> mediaChoosers; ///< by what they allow
    QStringList revealed;
    QList<QUrl> opened;
    QList<QFont> fontPanels; ///< by what is chosen in them first

    int ask(QWidget*, const QString& message, const QString& informative,
            const QStringList& buttons) override {
        alerts.append(message);
        alertTexts.append(informative + u'\n' + buttons.join(u'\n'));
        return alertAnswer;
    }
    void chooseMedia(QWidget*, const QString&, OpenPanel::Mode mode,
                     std::function<void(const QStringList&)> chosen) override {
        mediaChoosers.append(mode);
        if (!chosenPaths.isEmpty())
            chosen(chosenPaths);
    }
    void chooseFolder(QWidget*, const QString&,
                      std::function<void(const QString&)> chosen) override {
        if (!chosenPaths.isEmpty())
            chosen(chosenPaths.first());
    }
    void chooseImage(QWidget* parent, std::function<void(const QString&)> chosen) override {
        chooseFolder(parent, {}, std::move(chosen));
    }
    void showFontPanel(QWidget*, const QFont& first, std::function<void(const QFont&)>) override {
        fontPanels.append(first);
    }
    void chooseColor(QWidget*, const QColor&, std::function<void(const QColor&)> chosen) override {
        if (chosenColor.isValid())
            chosen(chosenColor);
    }
    void setText(const QString& text) override { pasteboard.setText(text); }
    [[nodiscard]] const QMimeData* contents() const override { return &pasteboard; }
    void selectFiles(const QStringList& paths) override { revealed += paths; }
    bool openUrl(const QUrl& url) override {
        opened.append(url);
        return opensUrls;
    }
};

/// Surroundings that reach nothing but `desktop` and the files "prefs.conf" and "window.conf" in
/// `dir`.
inline Surroundings surroundingsOf(const std::shared_ptr<FakeDesktop>& desktop,
                                   const testkit::TempDir& dir) {
    return {std::make_unique<platform::NSUserDefaults>(dir.path("prefs.conf")),
            desktop,
            desktop,
            desktop,
            desktop,
            desktop,
            std::make_shared<QSettings>(dir.path("window.conf"), QSettings::IniFormat),
            [desktop = desktop.get()] { return desktop->now; }};
}

} // namespace clipheave::app
