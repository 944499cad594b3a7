// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>
#include <QVariantMap>

namespace clipheave::platform {

/// A new file of a photo with other properties.
struct PhotoRewrite {
    QString source, target;
    /// By dictionary ("{Exif}", "{TIFF}", "{GPS}", "{IPTC}") a map of the keys that override or
    /// add, or an invalid value (kCFNull), which removes the block; an invalid value of a key
    /// removes the key. What is not named stays.
    QVariantMap properties;
    /// Nothing personal stays: also XMP, comments, thumbnails, further images and trailers go.
    /// Orientation and colour profile stay.
    bool removesEverything = false;
};

/// Writes the target in one step, with the attributes, the permissions and the modification date of
/// the source; pixels are copied, never coded. Returns notes. NotSupported for kinds that cannot be
/// written without loss, InvalidData for damaged files; then nothing is left.
[[nodiscard]] Result<Notes> rewritePhoto(const PhotoRewrite& rewrite);

} // namespace clipheave::platform
