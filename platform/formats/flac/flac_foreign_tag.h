// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"
#include "platform/media/model/metadata_item.h"

#include <QStringList>

namespace clipheave::platform {

/// What the tags say that some programs write in front of a FLAC file (ID3v2) or behind it (ID3v1,
/// APE, Lyrics3), where the format has no place for one (RFC 9639, section 8): most readers show
/// the comments alone, others the tags alone.
struct FlacForeignTag {
    QByteArrayList comments; ///< "NAME=text", in the order of the frames
    EncodedImage cover;      ///< null: none
    QStringList notCarried;  ///< what no comment holds, each once ("PRIV", "TXXX:a=b", "Lyrics3")
};
/// Returns the items of the tag in the first `front` bytes and of those behind the audio, which
/// begins at `audioStart`: of an identifier that stands in both those of the tag in front.
[[nodiscard]] QList<AVMetadataItem> flacForeignItems(FileReader& reader, std::uint64_t front,
                                                     std::uint64_t audioStart);
/// Sorts the items of foreign tags. The comments that are `present` win over their texts, as they
/// do in the reader; a text that says something else is not carried. So is a cover where the file
/// `hasPicture`, and what is over 1 MiB of texts in all.
[[nodiscard]] FlacForeignTag readFlacForeignTag(FileReader& reader,
                                                const QList<AVMetadataItem>& items,
                                                const QByteArrayList& present, bool hasPicture);

} // namespace clipheave::platform
