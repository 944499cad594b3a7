// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/encoded_image.h"

namespace clipheave::platform {

/// An image file as cover art: JPEG and PNG files keep their own bytes, HEIF becomes JPEG, every
/// other format that can be decoded PNG. NotFound, AccessDenied, or InvalidData when it is not an
/// image.
[[nodiscard]] Result<EncodedImage> imageForArtwork(const QString& path);

} // namespace clipheave::platform
