// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::openFrames.
[[nodiscard]] Result<std::unique_ptr<FrameSource>> openFrameSource(const QString& path,
                                                                   std::optional<QSize> size);

} // namespace clipheave::platform
