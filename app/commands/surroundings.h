// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/open_panel.h"
#include "platform/foundation/user_defaults.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>

class QColor;
class QFont;
class QMimeData;
class QSettings;
class QWidget;

namespace clipheave::app {

/// Questions that the user must answer before a command goes on.
class Alerts {
public:
    virtual ~Alerts() = default;
    /// Shows an alert above `parent` and waits. Returns the index of the pressed button in
    /// `buttons`, -1 when the alert was closed without one.
    virtual int ask(QWidget* parent, const QString& message, const QString& informative,
                    const QStringList& buttons) = 0;
};

/// Asks the user for paths, without blocking. Cancelling calls nothing back.
class FileChooser {
public:
    virtual ~FileChooser() = default;
    /// `chosen` gets at least one absolute path.
    virtual void chooseMedia(QWidget* parent, const QString& message, OpenPanel::Mode mode,
                             std::function<void(const QStringList&)> chosen) = 0;
    /// One folder; the chooser opens in `current`.
    virtual void chooseFolder(QWidget* parent, const QString& current,
                              std::function<void(const QString&)> chosen) = 0;
    /// One image file.
    virtual void chooseImage(QWidget* parent, std::function<void(const QString&)> chosen) = 0;
};

/// The system's panels for fonts and colours. None blocks.
class StylePanels {
public:
    virtual ~StylePanels() = default;
    /// The one font panel, brought to the front: `first` is chosen in it when it opens, `changed`
    /// gets each later choice.
    virtual void showFontPanel(QWidget* parent, const QFont& first,
                               std::function<void(const QFont&)> changed) = 0;
    /// A colour; the panel opens with `current`. A cancelled one calls nothing back.
    virtual void chooseColor(QWidget* parent, const QColor& current,
                             std::function<void(const QColor&)> chosen) = 0;
};

/// What was copied last, in any program.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    virtual void setText(const QString& text) = 0;
    /// Returns what can be pasted; null for nothing. Valid until control returns to the event loop.
    [[nodiscard]] virtual const QMimeData* contents() const = 0;
};

/// The desktop's other programs.
class Workspace {
public:
    virtual ~Workspace() = default;
    /// Shows files selected in the file browser. Failures are not reported.
    virtual void selectFiles(const QStringList& paths) = 0;
    /// Opens web pages, mail drafts and files in their usual program; false when there is none.
    virtual bool openUrl(const QUrl& url) = 0;
};

/// Returns the current date and time, in local time.
using Clock = std::function<QDateTime()>;

/// What the controller reaches outside its process. None of it is ever null.
struct Surroundings {
    std::unique_ptr<platform::NSUserDefaults> defaults; ///< the per-user store
    std::shared_ptr<Alerts> alerts;
    std::shared_ptr<FileChooser> fileChooser;
    std::shared_ptr<StylePanels> stylePanels;
    std::shared_ptr<Pasteboard> pasteboard;
    std::shared_ptr<Workspace> workspace;
    /// Geometry, column widths, appearance: apart from the preference keys.
    std::shared_ptr<QSettings> windowSettings;
    Clock clock;
};

/// Returns the user's own desktop: real alerts, choosers, panels and programs, the clipboard and
/// the system's clock.
[[nodiscard]] Surroundings desktopSurroundings(std::unique_ptr<platform::NSUserDefaults> defaults,
                                               std::shared_ptr<QSettings> windowSettings);

} // namespace clipheave::app
