// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Checks a plan and reads the headers of its sources. InvalidArgument for a plan that contradicts
/// itself, NotSupported when a source lacks the stream or there is no decoder for it.
[[nodiscard]] Result<PlannedExport> readExportPlan(const ExportPlan& plan);

/// Returns the date in a file's movie header; empty when there is none.
[[nodiscard]] QByteArray creationTimeOf(const QString& path);

} // namespace clipheave::platform
