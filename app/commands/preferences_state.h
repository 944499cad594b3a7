// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/preferences.h"

#include <QColor>

namespace clipheave::app {

/// The preference values in force and the choices that are not stored with them. Main thread.
struct PreferencesState {
    media::Preferences values;
    QColor currentFontColor = Qt::white; ///< not stored: white at every start
    bool fontChosen = false;             ///< the font panel was used
};

} // namespace clipheave::app
