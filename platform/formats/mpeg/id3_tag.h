// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <QList>

#include <optional>
#include <vector>

namespace clipheave::platform {

/// Ten bytes in front of every ID3v2 tag (ID3v2.2.0, v2.3.0 and v2.4.0 structure, section 3.1).
struct Id3Header {
    int version = 0; ///< 2, 3 or 4; any other number is a tag that only its size is known of
    bool unsynchronised = false;
    bool compressed = false; ///< v2.2 only: contents undefined
    bool extended = false;   ///< v2.3 and v2.4: a further header follows
    std::uint32_t bodySize = 0;
    std::uint64_t totalSize = 0; ///< with header and footer
};
[[nodiscard]] std::optional<Id3Header> parseId3Header(ByteView head);

/// One frame, transformations undone. `id` is that of v2.3/v2.4 also in a v2.2 tag.
struct Id3Frame {
    QByteArray id;
    ByteRange body;
};

/// Frames of the tag at the start of `range`, in file order. A frame that is encrypted, empty or
/// damaged is left out; reading ends at padding or at the first thing that is no frame.
[[nodiscard]] std::vector<Id3Frame> readId3Frames(const ByteRange& range);

/// What a tag says, as items of key space "org.id3". Texts stand as they are in the tag: TYER,
/// TDAT, TRDA and TDRC are told apart. Several values of one frame are joined by kValueSeparator.
///
/// Identifiers are "id3/" + frame with these exceptions, so that whoever takes the last item of an
/// identifier gets the right one:
/// - COMM: "id3/COMM" is the first comment with an empty description, or the first whose
/// description
///   has no "iTun" in it (those hold numbers for players); others are "id3/COMM%3A…".
/// - TXXX, WXXX: "id3/TXXX%3A" + description.
/// - A frame id that stands again: only the first is an item, other than COMM, APIC and the like.
/// - Comments and then images stand last, the front cover after all others.
struct Id3Contents {
    std::uint64_t tagSize = 0; ///< bytes of the raw tag, 0 when there is none
    QList<AVMetadataItem> items;
};
[[nodiscard]] Id3Contents readId3(const ByteRange& range);

/// The image of the last "id3/APIC" item; null when there is none.
[[nodiscard]] EncodedImage artworkOf(FileReader& reader, const QList<AVMetadataItem>& items);

} // namespace clipheave::platform
