// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <functional>

namespace clipheave::platform {

/// See MediaEngine::audioToM4a.
[[nodiscard]] Result<Notes> convertToM4a(const QString& source, const QString& target,
                                         const std::function<bool(double)>& progress);

} // namespace clipheave::platform
