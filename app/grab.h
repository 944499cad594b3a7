// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace clipheave::app {

class AppDelegate;

struct GrabRequest {
    QString file; ///< PNG to write
    QString view;
    QString size; ///< "1440x900"
    QStringList paths;
    /// Whether jobs may be run for the image, which write to the storage folder: only where the
    /// preferences are not the user's own.
    bool mayWrite = false;
};

[[nodiscard]] QStringList grabViewNames();
/// Imports the paths, brings up the view, paints the window into the file. Returns an exit status.
[[nodiscard]] int grabView(AppDelegate& controller, const GrabRequest& request);

} // namespace clipheave::app
