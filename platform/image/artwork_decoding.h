// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QImage>

namespace clipheave::platform {

/// Returns whether an image is larger than the artwork that is decoded here: over 100 million
/// pixels. A damaged header must not ask for gigabytes.
[[nodiscard]] bool hasTooManyPixels(QSize size);

/// Lets Qt's image readers take as much memory as the largest such image needs; else they refuse
/// healthy ones over 128 MiB. Any thread.
void allowLargeImages();

/// Returns the smallest size that the decoder of JPEG makes of an image while it decodes, eighths
/// of its sides, whose longer side has at least `side` pixels; the whole size when it has fewer.
[[nodiscard]] QSize jpegFraction(QSize size, int side);

/// Returns the pixels of an encoded image, upright. LimitExceeded when hasTooManyPixels(),
/// InvalidData when it cannot be decoded to its end; `operation` and `path` are the error's.
[[nodiscard]] Result<QImage> decodedArtwork(const QByteArray& bytes, MessageCode operation,
                                            const QString& path = {});

} // namespace clipheave::platform
