// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/trailing_tags.h"

#include "platform/formats/audio_facts.h"
#include "platform/formats/mpeg/ape_tag.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/tag_footers.h"
#include "platform/formats/tag_text.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kMostApeItems = 1000;
constexpr qsizetype kShortestApeKey = 2;
constexpr std::uint64_t kLongestCoverName = 256;
constexpr std::uint64_t kLargestApeText = 64u << 10;
constexpr std::uint64_t kLargestApeItem = 128u << 20;
constexpr int kMostTrailingTags = 8;

QString id3v1Text(ByteView tag, std::uint64_t at, std::uint64_t length) {
    return textOfUnknownEncoding(tag.sub(at, length).bytes());
}

QList<NamedTag> id3v1Tags(ByteView tag) {
    QList<NamedTag> tags{{QStringLiteral("title"), id3v1Text(tag, 3, 30)},
                         {QStringLiteral("artist"), id3v1Text(tag, 33, 30)},
                         {QStringLiteral("album"), id3v1Text(tag, 63, 30)},
                         {QStringLiteral("date"), id3v1Text(tag, 93, 4)}};
    const bool hasTrack = tag.u8(125) == 0 && tag.u8(126).value_or(0) != 0; // ID3v1.1
    tags.append({QStringLiteral("comment"), id3v1Text(tag, 97, hasTrack ? 28 : 30)});
    if (hasTrack)
        tags.append({QStringLiteral("track"), QString::number(*tag.u8(126))});
    return tags;
}

void addApeItem(const ApeItemHeader& item, const ByteRange& value, TrailingTags& tags) {
    const QString shownKey = QString::fromLatin1(item.key);
    if (item.isText) { // several values with a NUL between
        if (const auto bytes = value.load(kLargestApeText))
            tags.ape.append({shownKey, id3Texts(Id3Encoding::Utf8, *bytes).join(kValueSeparator)});
        else
            tags.apeHidden.append(shownKey);
        return;
    }
    const QByteArray key = item.key.toLower();
    const qsizetype name = value.view(0, kLongestCoverName).bytes().indexOf('\0');
    const ByteRange image = value.sub(static_cast<std::uint64_t>(name) + 1);
    if (!key.startsWith("cover art (") || name < 0 || image.image().isNull())
        tags.apeHidden.append(shownKey);
    else if (key == "cover art (front)")
        tags.apeCover = image;
    else
        tags.apeImages.push_back(image);
}

void readApeItems(const ByteRange& body, std::uint32_t count, TrailingTags& tags) {
    std::uint64_t at = 0;
    for (std::uint32_t i = 0; i < std::min(count, kMostApeItems) && at < body.size(); ++i) {
        const auto item = parseApeItemHeader(body.view(at, ApeItemHeader::kLargest));
        if (!item || item->key.size() < kShortestApeKey || item->valueSize > kLargestApeItem)
            return;
        const std::uint64_t start = at + item->size();
        at = start + item->valueSize;
        if (at > body.size())
            return;
        addApeItem(*item, body.sub(start, item->valueSize), tags);
    }
}

/// Returns the start of the APE tag whose footer ends at `end`, or `end` when there is none.
std::uint64_t readApeTag(FileReader& reader, std::uint64_t from, std::uint64_t end,
                         TrailingTags& tags) {
    if (end - from < ApeTagEdge::kSize)
        return end;
    const auto footer =
        parseApeTagEdge(reader.viewUpTo(end - ApeTagEdge::kSize, ApeTagEdge::kSize));
    if (!footer)
        return end;
    const std::uint64_t header = footer->hasHeader ? ApeTagEdge::kSize : 0;
    if (footer->tagSize < ApeTagEdge::kSize || footer->tagSize + header > end - from)
        return end - ApeTagEdge::kSize;
    const std::uint64_t start = end - footer->tagSize;
    const ByteRange items(reader, start, footer->tagSize - ApeTagEdge::kSize);
    if (tags.ape.isEmpty())
        readApeItems(items, footer->itemCount, tags);
    return start - header;
}

std::uint64_t skipLyrics3(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < kLyrics3FooterSize)
        return end;
    const auto size = lyrics3TagSize(reader.viewUpTo(end - kLyrics3FooterSize, kLyrics3FooterSize));
    return size && *size <= end - from ? end - *size : end;
}

std::uint64_t readAppendedId3v2(FileReader& reader, std::uint64_t from, std::uint64_t end,
                                TrailingTags& tags) {
    if (end - from < 2 * Id3Header::kSize)
        return end;
    const auto size = appendedId3TagSize(reader.viewUpTo(end - Id3Header::kSize, Id3Header::kSize));
    if (!size || *size > end - from)
        return end;
    tags.id3v2 = ByteRange(reader, end - *size, *size);
    return end - *size;
}

std::uint64_t readId3v1(FileReader& reader, std::uint64_t from, std::uint64_t end,
                        TrailingTags& tags) {
    if (end - from < kId3v1Size)
        return end;
    const ByteView tag = reader.viewUpTo(end - kId3v1Size, kId3v1Size);
    if (!tag.startsWith("TAG"))
        return end;
    tags.id3v1 = id3v1Tags(tag);
    return end - kId3v1Size;
}

} // namespace

TrailingTags readTrailingTags(FileReader& reader, std::uint64_t from) {
    TrailingTags tags;
    tags.audioEnd = reader.size();
    if (from >= reader.size())
        return tags;
    // One read for the usual small tags, so that the steps below find them in the window.
    static_cast<void>(reader.viewUpTo(
        reader.size() - std::min<std::uint64_t>(reader.size() - from, kId3v1Size + 64),
        kId3v1Size + 64));
    for (int i = 0; i < kMostTrailingTags; ++i) {
        std::uint64_t end = tags.audioEnd;
        if (tags.id3v1.isEmpty())
            end = readId3v1(reader, from, end, tags);
        end = readApeTag(reader, from, end, tags);
        const std::uint64_t behindLyrics = end;
        end = skipLyrics3(reader, from, end);
        tags.hasLyrics3 |= end < behindLyrics;
        if (!tags.id3v2)
            end = readAppendedId3v2(reader, from, end, tags);
        if (end == tags.audioEnd)
            break;
        tags.audioEnd = end;
    }
    return tags;
}

void addTrailingTags(const TrailingTags& tags, MediaFacts& facts) {
    if (tags.id3v2) {
        Id3Contents id3 = readId3(*tags.id3v2);
        addMissingItems(facts.metadata, id3.items);
        if (facts.id3TagSize == 0)
            facts.id3TagSize = tags.id3v2->size();
    }
    QList<AVMetadataItem> ape = itemsFromTags(tags.ape);
    const auto append = [&ape](const ByteRange& image) {
        ape.append(AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                        QStringLiteral("id3/APIC"), image.value()));
    };
    if (tags.apeCover) {
        std::for_each(tags.apeImages.begin(), tags.apeImages.end(), append);
        append(*tags.apeCover);
    }
    addMissingItems(facts.metadata, ape);
    addMissingItems(facts.metadata, itemsFromTags(tags.id3v1));
}

} // namespace clipheave::platform
