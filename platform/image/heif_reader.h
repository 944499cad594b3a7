// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QByteArray>
#include <QList>
#include <QSize>

namespace clipheave::platform {

/// What the boxes of a HEIF, AVIF or CR3 file say about its main image.
struct HeifFacts {
    QSize pixelSize;     ///< as stored, before the transforms; empty when unknown
    int orientation = 0; ///< 1 to 8 from `irot` and `imir`; 0 for CR3, which leaves it to its tags
    QByteArray exif;     ///< a TIFF structure, null when there is none
    QByteArray iccProfile;
    int bitsPerComponent = 0, components = 0; ///< of `pixi`, 0 when unknown
    /// CR3 only: the TIFF structures CMT1 (main), CMT2 (Exif) and CMT4 (GPS), null when absent.
    QByteArray mainTags, photoTags, gpsTags;
    Message problem; ///< why some of it could not be read
};

/// True for files that begin as one of these ("ftyp" with a still-image brand).
[[nodiscard]] bool isHeif(ByteView head);

/// Reads `meta` and the Exif item, or the tag boxes of CR3; never image data. Bounded whatever
/// the bytes say. InvalidData when there is nothing at all. Sources: ISO/IEC 23008-12,
/// 14496-12 8.11. Deliberate: not by libheif, whose release 1.15 reads the data of every image item
/// to open a file (1.6 MB of a photo of 1.6 MB, here 70 kB), refuses a file that is cut in its
/// tiles, and has no call for rotation and mirroring.
[[nodiscard]] Result<HeifFacts> readHeif(FileReader& reader);

} // namespace clipheave::platform
