// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/export_plan.h"

#include <functional>

namespace clipheave::platform {

/// See MediaEngine::runExport.
[[nodiscard]] Result<Notes> runExportPlan(const ExportPlan& plan, const QString& target,
                                          const ExportResources& resources,
                                          const std::function<bool(double)>& progress);

} // namespace clipheave::platform
