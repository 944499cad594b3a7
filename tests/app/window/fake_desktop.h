// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/commands/surroundings.h"
#include "tests/testkit/testkit.h"

namespace clipheave::app {

/// A desktop that answers as a test wants and keeps what it was asked.
class FakeDesktop : public Alerts, public FileChooser, public Workspace {
public:
    int alertAnswer = 0;
    QStringList chosenPaths; ///< what the user chooses next; none: cancels
    bool opensUrls = true;
    QDateTime now = QDateTime::currentDateTime();

    QStringList alerts;                   ///< messages
    QList<OpenPanel::Mode> mediaChoosers; ///< by what they allow
    QStringList revealed;
    QList<QUrl> opened;

    int ask(QWidget*, const QString& message, const QString&, const QStringList&) override {
        alerts.append(message);
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
    void selectFiles(const QStringList& paths) override { revealed += paths; }
    bool openUrl(const QUrl& url) override {
        opened.append(url);
        return opensUrls;
    }
};

/// Surroundings that reach nothing but `desktop` and the preferences file "prefs.conf" in `dir`.
inline Surroundings surroundingsOf(const std::shared_ptr<FakeDesktop>& desktop,
                                   const testkit::TempDir& dir) {
    return {std::make_unique<platform::NSUserDefaults>(dir.path(QStringLiteral("prefs.conf"))),
            desktop, desktop, desktop, [desktop = desktop.get()] { return desktop->now; }};
}

} // namespace clipheave::app
