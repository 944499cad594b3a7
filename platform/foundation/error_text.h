// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

namespace clipheave::platform {

/// Returns the text of `error` for a place where `shownPath` stands beside it: that path is not
/// named again.
[[nodiscard]] QString textBeside(const Error& error, const QString& shownPath);

} // namespace clipheave::platform
