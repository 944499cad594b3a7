// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::audioPeaks.
[[nodiscard]] Result<QByteArray> readAudioPeaks(const QString& path, int columns,
                                                const std::function<bool()>& goOn);

} // namespace clipheave::platform
