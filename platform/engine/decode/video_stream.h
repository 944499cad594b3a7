// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/media/model/frame_rotation.h"

namespace clipheave::platform {

/// Returns the first video that is not an attached picture; null when there is none.
[[nodiscard]] AVStream* videoStream(AVFormatContext& context);
/// Returns the rotation in steps of 90 degrees nearest to the stream's display matrix.
[[nodiscard]] FrameRotation rotationOfStream(const AVStream& stream);

} // namespace clipheave::platform
