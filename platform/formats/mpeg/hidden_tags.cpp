// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/hidden_tags.h"

#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/trailing_tags.h"

namespace clipheave::platform {
namespace {

constexpr int kMostTagsInFront = 8;

} // namespace

QStringList hiddenMpegTags(FileReader& reader) {
    QStringList names;
    std::uint64_t at = 0;
    for (int i = 0; i < kMostTagsInFront; ++i) {
        const auto header = id3HeaderAt(reader, at);
        if (!header)
            break;
        names += readId3(ByteRange(reader, at, header->totalSize)).hidden;
        at += header->totalSize;
    }
    const TrailingTags trailing = readTrailingTags(reader, at);
    if (trailing.id3v2)
        names += readId3(*trailing.id3v2).hidden;
    if (trailing.hasLyrics3)
        names.append(QStringLiteral("Lyrics3"));
    names.removeDuplicates();
    return names;
}

} // namespace clipheave::platform
