// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::keyframeAt.
[[nodiscard]] Result<RawFrame> grabKeyframe(const QString& path, double seconds, int largestSide);

} // namespace clipheave::platform
