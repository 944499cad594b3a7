// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/jpeg_segments.h"

#include <QByteArray>

#include <vector>

// The part of an XMP packet that does not fit into one segment of a JPEG file: a packet of its own,
// cut into segments, which the main packet names by its MD5 digest. Source: XMP part 3, 1.1.3.1.
namespace clipheave::platform {

inline constexpr char kHasExtendedXmp[] = "HasExtendedXMP"; ///< the property of the main packet

/// One extended packet.
struct ExtendedXmp {
    QByteArray digest; ///< 32 hexadecimal digits, as the segments have it
    QByteArray packet; ///< empty when a segment of it is missing
};

/// Returns the digest of the extended packet that the segment holds a part of; empty for another
/// segment.
[[nodiscard]] QByteArray extendedXmpDigest(const JpegSegment& segment);
/// Returns the extended packets of an image, joined.
[[nodiscard]] std::vector<ExtendedXmp> extendedXmpOf(const JpegImage& image);
/// Returns the digest that names a packet.
[[nodiscard]] QByteArray digestOfXmp(const QByteArray& packet);
/// Returns the packet as payloads of segments; none for an empty one.
[[nodiscard]] std::vector<QByteArray> extendedXmpPayloads(const QByteArray& packet);

/// Returns the main packet naming another extended packet than that of `digest`, or none when
/// `packet` is empty; the same bytes when it names neither.
[[nodiscard]] QByteArray namingExtendedXmp(const QByteArray& main, const QByteArray& digest,
                                           const QByteArray& packet);

} // namespace clipheave::platform
