// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"
#include "platform/media/model/tag_mapping.h"

#include <vector>

namespace clipheave::platform {

/// A Vorbis comment as it is stored (xiph.org, Ogg Vorbis I comment field): lengths little-endian,
/// texts UTF-8. Unlike the tag library's class it keeps the order and the spelling of the entries,
/// so that what is not changed is written byte for byte.
struct VorbisComment {
    ByteRange vendor{QByteArray()};
    std::vector<ByteRange> entries; ///< "NAME=text", which nothing has checked
    bool isComplete = false;        ///< false: cut short, or more entries than were asked for
};
/// Splits at most `most` entries; a comment cut short gives those before the cut.
[[nodiscard]] VorbisComment splitVorbisComment(const ByteRange& block, std::uint32_t most);
[[nodiscard]] QByteArray renderVorbisComment(const QByteArray& vendor,
                                             const QByteArrayList& entries);

/// Returns whether an entry is a text of that name, in whatever case of letters.
[[nodiscard]] bool isCommentNamed(const QByteArray& entry, QByteArrayView name);

/// Returns the entries that are texts with a name. Images in text form and the like, over 256 KiB,
/// are left out.
[[nodiscard]] QList<NamedTag> tagsOfVorbisComment(const ByteRange& block);

} // namespace clipheave::platform
