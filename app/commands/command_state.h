// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::app {

/// What the dispatcher and the start set for the commands. Main thread.
struct CommandState {
    unsigned macOsVer = 0; ///< minor number of the system's version
    QString title;         ///< fixed title of the menu entry whose command runs; empty: a button
};

} // namespace clipheave::app
