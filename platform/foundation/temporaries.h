// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::platform {

/// Returns a new hidden name in the target's folder, ".clipheave-<space>-<pid>-<random>.tmp". The
/// space stands for the machine and its pid namespace (namespaces(7)): elsewhere the number means
/// another process, or none.
[[nodiscard]] QString temporaryNameBeside(const QString& target);
/// Returns whether a file or folder of this name is unfinished work of this program.
[[nodiscard]] bool isTemporaryName(const QString& name);
/// Removes temporaries in `folder` whose process is gone. Those of other machines and pid
/// namespaces stay: nobody here can tell whether their processes live.
void removeStaleTemporaries(const QString& folder);

} // namespace clipheave::platform
