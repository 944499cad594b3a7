// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::platform {

/// Notes in the state folder that this process makes temporaries in `folder`, once a folder. The
/// record goes when the process ends in order; what a kill leaves is worked off later. Best effort:
/// without a state folder there is no record. Any thread.
void recordTemporariesIn(const QString& folder);
/// Removes the temporaries of dead processes from the folders that their records name, and those
/// records. Folders that no dead process wrote into are not read, however large they are. A record
/// stays while one of its temporaries is too young, or its folder is away (a disk that was taken
/// out), for a month.
void removeTemporariesOfDeadProcesses();

} // namespace clipheave::platform
