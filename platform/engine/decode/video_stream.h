// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/media/model/picture_turn.h"

namespace clipheave::platform {

/// Returns the first video that is no attached picture; null when there is none.
[[nodiscard]] AVStream* videoStream(AVFormatContext& context);
/// Returns the rotation by quarters that is nearest to the stream's display matrix.
[[nodiscard]] QuarterTurn quarterTurnOf(const AVStream& stream);

} // namespace clipheave::platform
