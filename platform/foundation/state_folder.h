// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>

namespace clipheave::platform {

/// Returns where this program keeps what must outlive it but is no setting: "clipheave" in
/// $XDG_STATE_HOME, or in ~/.local/state (XDG Base Directory Specification). It need not exist.
[[nodiscard]] QString stateFolder();
/// Makes that folder when it is missing, for its owner alone.
[[nodiscard]] Result<void> createStateFolder();

} // namespace clipheave::platform
