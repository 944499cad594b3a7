// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/encoded_image.h"

namespace clipheave::platform {

/// A picture file as cover art: JPEG and PNG files keep their own bytes, every other format that
/// can be decoded becomes PNG. NotFound, AccessDenied, or InvalidData when it is no picture.
[[nodiscard]] Result<EncodedPicture> pictureForArtwork(const QString& path);

} // namespace clipheave::platform
