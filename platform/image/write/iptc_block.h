// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/photo_change.h"

#include <QByteArray>

#include <optional>

// IPTC data sets and the image resources that hold them in JPEG, PSD and TIFF files. Sources:
// IPTC-NAA Information Interchange Model 4.2; Adobe Photoshop File Formats, "Image Resource
// Blocks".
namespace clipheave::platform {

/// Returns the data sets with the change; what it does not name keeps its bytes, unless its texts
/// must be brought to UTF-8 because a new one needs it. InvalidData when they cannot be parsed.
[[nodiscard]] Result<QByteArray> changedIptc(const QByteArray& block, const PhotoChange& change);

/// Returns image resources ("8BIM" and kin) with the change of the IPTC block among them and of its
/// checksum; the block is added if there is none. A removal of everything keeps only those that
/// belong to the picture. InvalidData as above.
[[nodiscard]] Result<QByteArray> changedImageResources(const QByteArray& resources,
                                                       const PhotoChange& change);
/// Returns likewise resources beside which the block stands elsewhere; `changed`: as it became
/// there, nothing when it stayed.
[[nodiscard]] Result<QByteArray>
changedImageResourcesBeside(const std::optional<QByteArray>& changed, const QByteArray& resources,
                            const PhotoChange& change);

} // namespace clipheave::platform
