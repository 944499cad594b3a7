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
/// Returns the thumbnail that the file holds of its main image, upright, in the colours of the
/// file; null when it holds none of at least `side` pixels on its longer side, or one of another
/// aspect ratio. Any thread.
[[nodiscard]] QImage heifThumbnail(const QByteArray& bytes, int side);

} // namespace clipheave::platform
