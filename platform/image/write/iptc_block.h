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

/// The blocks that are added to image resources without them: a file has one place for each.
enum class ResourceBlocks { None, Iptc, IptcAndExif };

/// Returns image resources ("8BIM" and kin) with the change of the IPTC, EXIF and XMP blocks among
/// them and of the checksum of IPTC; a removal of everything keeps only those that belong to the
/// image. InvalidData as above, or when an EXIF block cannot be parsed.
[[nodiscard]] Result<QByteArray> changedImageResources(const QByteArray& resources,
                                                       const PhotoChange& change,
                                                       ResourceBlocks adds, Notes& notes);
/// Returns likewise resources beside which the IPTC block stands elsewhere, nothing added;
/// `changed`: as it became there, nothing when it stayed.
[[nodiscard]] Result<QByteArray>
changedImageResourcesBeside(const std::optional<QByteArray>& changed, const QByteArray& resources,
                            const PhotoChange& change, Notes& notes);

} // namespace clipheave::platform
