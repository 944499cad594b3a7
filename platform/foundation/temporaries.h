// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::platform {

/// Returns a new hidden name in the target's folder, ".clipheave-<space>-<pid>-<random>.tmp" (see
/// newNameOfThisProcess()), and records the folder for removeTemporariesOfDeadProcesses().
[[nodiscard]] QString temporaryNameBeside(const QString& target);
/// Returns whether a file or folder of this name is unfinished work of this program.
[[nodiscard]] bool isTemporaryName(const QString& name);
/// Removes temporaries in `folder` whose process is gone. Those of other machines and pid
/// namespaces stay: nobody here can tell whether their processes live. Returns whether none of a
/// dead process is left; a young one stays for a minute, on shared storage for a day.
bool removeStaleTemporaries(const QString& folder);

} // namespace clipheave::platform
