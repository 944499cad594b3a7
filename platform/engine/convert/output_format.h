// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_format.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Returns the format of a plan's video: that of its first source as far as the plan does not say
/// otherwise. An HDR video stays one (10 bits, its transfer and primaries) unless segments of both
/// kinds meet, then all become SDR. More than 8 bits of SDR become 10 in a video of constant
/// quality, 8 in one of a bit rate. `notes` gets a note on any of these. An untagged video is
/// tagged where a player would take its colours for others at the output's size.
[[nodiscard]] FrameFormat outputFormat(const ExportVideo& video,
                                       const std::vector<PlannedSegment>& segments, Notes& notes);

} // namespace clipheave::platform
