// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"
#include "platform/media/model/media_facts.h"
#include "platform/media/model/tag_mapping.h"

#include <QList>
#include <QStringList>

#include <optional>
#include <vector>

namespace clipheave::platform {

/// What stands behind the audio of a file: ID3v1 (128 bytes, the last ones), Lyrics3, APEv2, and
/// an ID3v2.4 tag with a footer.
struct TrailingTags {
    std::uint64_t audioEnd = 0; ///< offset where the first of them begins
    QList<NamedTag> id3v1;      ///< under the names of tag_mapping.h
    QList<NamedTag> ape;
    std::optional<ByteRange> apeCover; ///< "Cover Art (Front)", name in front cut off
    std::vector<ByteRange> apeImages;  ///< "Cover Art (Back)" and the like, likewise
    QStringList apeHidden; ///< keys of binary items that are no images, links, long texts
    std::optional<ByteRange> id3v2;
    bool hasLyrics3 = false; ///< its texts are not read
};
/// Reads them backwards from the end; `from` is where they may begin at the earliest. More lenient
/// than findMpegAudio(): what looks like a tag is read as one, since nothing is lost by it.
[[nodiscard]] TrailingTags readTrailingTags(FileReader& reader, std::uint64_t from);

/// Adds their items to what stands in front of the audio already, ID3v2.4 before APE before ID3v1.
void addTrailingTags(const TrailingTags& tags, MediaFacts& facts);

} // namespace clipheave::platform
