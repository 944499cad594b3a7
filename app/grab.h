// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace clipheave::app {

class AppDelegate;

/// What to paint and into which file.
struct GrabRequest {
    QString file; ///< PNG to write
    QString view;
    QString size; ///< "1440x900"
    QStringList paths;
    /// Whether jobs may run, which write to the storage folder: only where the preferences are not
    /// the user's own.
    bool mayWrite = false;
};

/// Returns the names that GrabRequest::view may have.
[[nodiscard]] QStringList grabViewNames();
/// Imports the paths, brings up the view and paints the window into the file. Returns an exit
/// status: 0, 1 when the file cannot be written, 2 for an unknown view.
[[nodiscard]] int grabView(AppDelegate& controller, const GrabRequest& request);

} // namespace clipheave::app
