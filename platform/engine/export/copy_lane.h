// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/packet_lanes.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Copies the packets of a video or an audio track into a lane, cut at packets (a video's start at
/// the key frame before it, hidden by the edit list) and stretched in time where the plan says so.
/// Returns when the track is complete, the lanes were stopped or something failed (which goes to
/// the lanes). `displayMatrix` as in ExportVideo, null for audio.
void copyTrack(std::vector<PlannedSegment>& segments, const std::array<double, 9>* displayMatrix,
               PacketLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
