// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/frame_source.h"

namespace clipheave::platform {

Result<std::unique_ptr<FrameSource>> openFrameSource(const QString& path, std::optional<QSize>) {
    return failure(ErrorCode::NotSupported, QStringLiteral("read frames"), path,
                   QStringLiteral("not available yet"));
}

} // namespace clipheave::platform
