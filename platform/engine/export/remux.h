// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/media_engine.h"

#include <functional>

namespace clipheave::platform {

/// See MediaEngine::remux.
[[nodiscard]] Result<Notes> remuxFile(const QString& source, const QString& target,
                                      RemuxTarget kind, UnheldStreams unheld,
                                      const std::function<bool(double)>& progress);

} // namespace clipheave::platform
