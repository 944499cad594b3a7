// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::app {

/// What imports leave behind for the commands after them. Main thread.
struct ImportState {
    bool blocalMode = false; ///< the list holds files of this computer
    /// Whether the last import walked a folder, and which: jobs keep its structure in the storage
    /// folder.
    bool bImportLocalFolder = false;
    QString bImportLocalPath;
    int running = 0; ///< imports under way
};

} // namespace clipheave::app
