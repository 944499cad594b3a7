// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

namespace clipheave::platform {

/// Returns whether no other frame refers to the one in `packet`; false when that is not known.
[[nodiscard]] bool isDisposableFrame(const AVPacket& packet, const AVCodecParameters& video);

} // namespace clipheave::platform
