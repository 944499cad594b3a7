// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// See MediaEngine::writeSample. NotSupported for an unknown muxer or encoder, InvalidArgument for
/// sizes, rates and lengths out of range. The same sample gives the same bytes.
[[nodiscard]] Result<void> writeSampleFile(const SampleMedia& sample, const QString& target);

} // namespace clipheave::platform
