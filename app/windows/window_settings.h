// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStandardPaths>
#include <QString>

namespace clipheave::app {

/// The file of the window's own settings (geometry, column widths, appearance), apart from the five
/// preference keys. For QSettings in its INI format.
inline QString windowSettingsFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/clipheave/window.conf");
}

} // namespace clipheave::app
