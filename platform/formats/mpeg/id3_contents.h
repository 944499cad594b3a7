// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <QList>
#include <QStringList>

namespace clipheave::platform {

/// What a tag says, as items of key space "org.id3". Texts stand as they are in the tag: TYER,
/// TDAT, TRDA and TDRC stay distinct. Several values of one frame are joined by kValueSeparator.
///
/// Identifiers are "id3/" + frame with these exceptions, so that whoever takes the last item of an
/// identifier gets the right one:
/// - COMM: "id3/COMM" is the first comment with an empty description, or the first whose
///   description has no "iTun" in it (those hold numbers for players); others are "id3/COMM%3A…".
/// - TXXX, WXXX: "id3/TXXX%3A" + description. A UFID of MusicBrainz is such a text.
/// - A frame id that stands again: only the first is an item, other than COMM, APIC and the like.
/// - Comments and then images stand last, the front cover after all others.
struct Id3Contents {
    std::uint64_t tagSize = 0; ///< bytes of the raw tag, 0 when there is none
    QList<AVMetadataItem> items;
    QStringList hidden; ///< ids of frames that give none: encrypted, damaged, images elsewhere
};
[[nodiscard]] Id3Contents readId3(const ByteRange& range);

/// The image of the last "id3/APIC" item; null when there is none.
[[nodiscard]] EncodedImage artworkOf(FileReader& reader, const QList<AVMetadataItem>& items);

} // namespace clipheave::platform
