// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <sys/stat.h>

namespace clipheave::platform {

/// Returns a new "<space>-<pid>-<random>". The space stands for the machine and its pid namespace
/// (namespaces(7)): elsewhere the number means another process, or none.
[[nodiscard]] QString newNameOfThisProcess();
/// Returns the process id in such a name; 0 when it is none, or of another space.
[[nodiscard]] int processOfName(const QString& name);
/// Returns whether the process that made the file lives. False also when another process has the
/// same number now, this one too: it began after the file was made.
[[nodiscard]] bool makerIsAlive(int process, const struct stat& file);

} // namespace clipheave::platform
