// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/photo_change.h"

#include <QByteArray>

namespace clipheave::platform {

/// Returns the packet without what a change removes and with what it sets in place of what stands
/// there already; the same bytes when it concerns nothing of it, empty when no property is left.
/// InvalidData when it is no XML. Sources: ISO 16684-1 (the serialisation); Metadata Working Group
/// Guidelines 2.0, 5 (which properties repeat EXIF and IPTC).
[[nodiscard]] Result<QByteArray> changedXmpPacket(const QByteArray& packet,
                                                  const PhotoChange& change);

/// Returns the packet with texts of IPTC data sets that it does not have yet, a new packet if it is
/// empty: for formats that have no place for IPTC. `left` gets the data sets that XMP has no
/// property for. Source: IPTC Photo Metadata Standard, mapping to XMP.
[[nodiscard]] QByteArray xmpPacketWithIptc(const QByteArray& packet, const IptcChanges& texts,
                                           std::vector<std::uint8_t>& left);

} // namespace clipheave::platform
