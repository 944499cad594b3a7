// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::openVideoWriter.
[[nodiscard]] Result<std::unique_ptr<VideoWriter>>
makeVideoWriter(const VideoWriterSettings& settings, const QString& target,
                const ExportResources& resources);

} // namespace clipheave::platform
