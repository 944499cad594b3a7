// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export_runner.h"

namespace clipheave::platform {

Result<QStringList> runExportPlan(const ExportPlan&, const QString& target, const ExportResources&,
                                  const std::function<bool(double)>&) {
    return failure(ErrorCode::NotSupported, QStringLiteral("export"), target,
                   QStringLiteral("not available yet"));
}

} // namespace clipheave::platform
