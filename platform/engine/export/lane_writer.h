// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/file_output.h"
#include "platform/engine/io/packet_lanes.h"
#include "platform/engine/plan/planned_export.h"

#include <functional>

namespace clipheave::platform {

/// Writes what the lanes give into a file, which is removed again unless all of it was written.
/// `progress` as MediaEngine has it; called at least ten times a second.
[[nodiscard]] Result<void> writeLanes(PacketLanes& lanes, const ExportPlan& plan,
                                      const PlannedExport& planned, const QString& target,
                                      const std::function<bool(double)>& progress);

} // namespace clipheave::platform
