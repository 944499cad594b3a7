// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/plan/export_lanes.h"
#include "platform/engine/plan/export_plan_reader.h"

namespace clipheave::platform {

/// Decodes and encodes audio into a lane. Returns when it is complete, the lanes were stopped or
/// something failed (told to the lanes).
void encodeAudio(const ExportAudio& audio, std::vector<PlannedSegment>& segments,
                 ExportLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
