// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QStringList>

#include <functional>

namespace clipheave::platform {

/// See MediaEngine::soundToM4a.
[[nodiscard]] Result<Notes> exportAudio(const QString& source, const QString& target,
                                        const std::function<bool(double)>& progress);

} // namespace clipheave::platform
