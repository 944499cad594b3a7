// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::openFrameReader.
[[nodiscard]] Result<std::unique_ptr<FrameReader>>
makeFrameReader(const QString& path, int stream, const ExportResources& resources);

} // namespace clipheave::platform
