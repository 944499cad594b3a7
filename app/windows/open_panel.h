// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>

class QSettings;
class QWidget;

namespace clipheave::app {

/// Asks for files and folders in a sheet on a window. Never blocks.
struct OpenPanel {
    enum Mode { FilesAndFolders, FilesOnly, OneFile };

    /// `chosen` gets at least one absolute path, and only when the user accepts. `settings`, which
    /// outlive the panel, keep the folder of the last choice.
    static void open(QWidget* parent, const QString& message, Mode mode, QSettings& settings,
                     std::function<void(const QStringList&)> chosen);
};

} // namespace clipheave::app
