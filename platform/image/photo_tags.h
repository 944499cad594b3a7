// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/image/heif_reader.h"

#include <QByteArray>
#include <QSize>
#include <QVariantMap>

namespace clipheave::platform {

/// The tags of a photo as the published dictionaries, and what the tag library says of its pixels.
struct PhotoTags {
    QVariantMap exif, tiff, gps, iptc;
    QSize pixelSize;                          ///< empty when unknown
    QByteArray iccProfile;                    ///< null when there is none
    int bitsPerComponent = 0, components = 0; ///< of TIFF, 0 when unknown
    Message problem;                          ///< why only a part could be read; else empty
};

/// Reads the tags of a file of any type that the tag library knows, but for HEIF. NotSupported for
/// other types, InvalidData when the library gives up.
[[nodiscard]] Result<PhotoTags> readPhotoTags(FileReader& reader);
/// The same from the TIFF structures of a HEIF or CR3 file.
[[nodiscard]] Result<PhotoTags> decodePhotoTags(const HeifFacts& facts);

} // namespace clipheave::platform
