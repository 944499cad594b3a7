// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>

#include <atomic>

namespace clipheave::app {

/// What imports set for later commands. Main thread, except `stopping`.
struct ImportState {
    bool blocalMode = true; ///< the list holds files of this computer
    /// Whether the last import walked a folder, and which: jobs keep its structure in the storage
    /// folder.
    bool bImportLocalFolder = false;
    QString bImportLocalPath;
    int running = 0;                   ///< imports under way
    std::atomic<bool> stopping{false}; ///< read by workers: the program ends
    QElapsedTimer summaryAge;          ///< since the summary of the list was made last
};

} // namespace clipheave::app
