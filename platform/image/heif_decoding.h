// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QImage>

namespace clipheave::platform {

/// Returns the main image of a HEIF or AVIF file, upright. NotSupported where libheif is missing,
/// which is loaded at the first call; LimitExceeded when hasTooManyPixels(), InvalidData when it
/// cannot be decoded; `operation` and `path` are the error's. Any thread.
[[nodiscard]] Result<QImage> decodedHeif(const QByteArray& bytes, MessageCode operation,
                                         const QString& path = {});

} // namespace clipheave::platform
