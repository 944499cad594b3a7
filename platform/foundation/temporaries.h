// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::platform {

/// Returns a new hidden name in the target's folder, ".clipheave-<pid>-<random>.tmp".
[[nodiscard]] QString temporaryNameBeside(const QString& target);
/// Removes temporaries in `folder` whose process is gone.
void removeStaleTemporaries(const QString& folder);

} // namespace clipheave::platform
