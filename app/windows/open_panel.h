// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>

class QWidget;

namespace clipheave::app {

/// Asks for files and folders in a sheet on a window. Never blocks.
struct OpenPanel {
    enum Mode { FilesAndFolders, FilesOnly };

    /// `chosen` gets at least one absolute path, and only when the user accepts.
    static void open(QWidget* parent, const QString& message, Mode mode,
                     std::function<void(const QStringList&)> chosen);

    /// Returns in place of the user while set; an empty answer is a cancelled panel.
    using Answerer = std::function<QStringList(const QString& message, Mode mode)>;
    static void setAnswerer(Answerer answerer);
};

} // namespace clipheave::app
