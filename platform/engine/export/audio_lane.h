// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/packet_lanes.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Decodes and encodes audio into a lane. Returns when it is complete, the lanes were stopped or
/// something failed (which goes to the lanes).
void encodeAudio(const ExportAudio& audio, std::vector<PlannedSegment>& segments,
                 PacketLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
