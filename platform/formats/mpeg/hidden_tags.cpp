// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/hidden_tags.h"

#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/trailing_tags.h"

namespace clipheave::platform {

QStringList hiddenMpegTags(FileReader& reader) {
    QStringList names;
    const std::uint64_t end =
        visitLeadingId3(reader, [&names](const ByteRange& tag) { names += readId3(tag).hidden; });
    const TrailingTags trailing = readTrailingTags(reader, end);
    if (trailing.id3v2)
        names += readId3(*trailing.id3v2).hidden;
    names += trailing.apeHidden;
    if (!trailing.apeCover && !trailing.apeImages.empty())
        names.append(QStringLiteral("APIC"));
    if (trailing.hasLyrics3)
        names.append(QStringLiteral("Lyrics3"));
    names.removeDuplicates();
    return names;
}

} // namespace clipheave::platform
