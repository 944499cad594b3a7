// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/packet_lanes.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Decodes, filters and encodes a video into a lane; decoding and encoding overlap. Returns when
/// the video is complete, the lanes were stopped or something failed (which goes to the lanes).
void encodeVideo(const ExportVideo& video, std::vector<PlannedSegment>& segments, int threads,
                 PacketLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
