// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/legacy_tags.h"

#include "platform/formats/mpeg/id3_tag.h"
#include "platform/formats/tag_text.h"

#include <QSet>

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr std::uint64_t kId3v1Size = 128;
constexpr std::uint64_t kApeFooterSize = 32;
constexpr std::uint32_t kMostApeItems = 1000;
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

/// APEv2 tag format, "APE Tag Item": size, flags, key, NUL, value.
void readApeItems(const ByteRange& body, std::uint32_t count, TrailingTags& tags) {
    std::uint64_t at = 0;
    for (std::uint32_t i = 0; i < std::min(count, kMostApeItems) && at < body.size(); ++i) {
        const ByteView head = body.view(at, 8 + 256);
        const auto size = head.le32(0);
        const auto flags = head.le32(4);
        const qsizetype keyLength = flags ? head.sub(8).bytes().indexOf('\0') : -1;
        if (keyLength < 2 || *size > kLargestApeItem)
            return;
        const QString key = QString::fromLatin1(head.sub(8).bytes().first(keyLength));
        const std::uint64_t start = at + 9 + static_cast<std::uint64_t>(keyLength);
        at = start + *size;
        if (at > body.size())
            return;
        if ((*flags >> 1 & 3) == 0) { // text, several values with a NUL between
            const auto bytes = body.sub(start, *size).load(kLargestApeText);
            if (bytes)
                tags.ape.append({key, id3Texts(Id3Encoding::Utf8, *bytes).join(kValueSeparator)});
        } else if (key.compare(u"Cover Art (Front)", Qt::CaseInsensitive) == 0) {
            const ByteView value = body.view(start, std::min<std::uint64_t>(*size, 256));
            const qsizetype name = value.bytes().indexOf('\0');
            if (name >= 0) {
                const auto skipped = static_cast<std::uint64_t>(name) + 1;
                tags.apeCover = body.sub(start + skipped, *size - skipped);
            }
        }
    }
}

/// The APE tag whose footer ends at `end`; its start, or `end` when there is none.
std::uint64_t readApeTag(FileReader& reader, std::uint64_t from, std::uint64_t end,
                         TrailingTags& tags) {
    if (end - from < kApeFooterSize)
        return end;
    const ByteView footer = reader.viewUpTo(end - kApeFooterSize, kApeFooterSize);
    if (!footer.startsWith("APETAGEX") || footer.size() < kApeFooterSize)
        return end;
    const std::uint32_t size = *footer.le32(12); // items and footer
    const std::uint32_t count = *footer.le32(16);
    const std::uint64_t header = *footer.le32(20) & 0x80000000 ? kApeFooterSize : 0;
    if (size < kApeFooterSize || size + header > end - from)
        return end - kApeFooterSize;
    const std::uint64_t start = end - size;
    if (tags.ape.isEmpty())
        readApeItems(ByteRange(reader, start, size - kApeFooterSize), count, tags);
    return start - header;
}

/// Lyrics3 v2.00: "LYRICSBEGIN" … six digits of size, "LYRICS200".
std::uint64_t skipLyrics3(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < 15)
        return end;
    const ByteView tail = reader.viewUpTo(end - 15, 15);
    if (!tail.sub(6).startsWith("LYRICS200"))
        return end;
    bool isNumber = false;
    const qulonglong size = tail.sub(0, 6).bytes().toByteArray().toULongLong(&isNumber);
    return isNumber && size + 15 <= end - from ? end - 15 - size : end;
}

std::uint64_t readTrailingId3v2(FileReader& reader, std::uint64_t from, std::uint64_t end,
                                TrailingTags& tags) {
    if (end - from < 20)
        return end;
    const ByteView footer = reader.viewUpTo(end - 10, 10);
    const auto header = footer.startsWith("3DI") ? parseId3Header(footer) : std::nullopt;
    const std::uint64_t size = header ? std::uint64_t{header->bodySize} + 20 : 0;
    if (!header || size > end - from)
        return end;
    tags.id3v2 = ByteRange(reader, end - size, size);
    return end - size;
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
    // One look for the usual small tags, so that the steps below find them in the window.
    static_cast<void>(reader.viewUpTo(
        reader.size() - std::min<std::uint64_t>(reader.size() - from, kId3v1Size + 64),
        kId3v1Size + 64));
    for (int i = 0; i < kMostTrailingTags; ++i) {
        std::uint64_t end = tags.audioEnd;
        if (tags.id3v1.isEmpty())
            end = readId3v1(reader, from, end, tags);
        end = readApeTag(reader, from, end, tags);
        end = skipLyrics3(reader, from, end);
        if (!tags.id3v2)
            end = readTrailingId3v2(reader, from, end, tags);
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
    if (tags.apeCover && !tags.apeCover->image().isNull())
        ape.append(AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                        QStringLiteral("id3/APIC"), tags.apeCover->value()));
    addMissingItems(facts.metadata, ape);
    addMissingItems(facts.metadata, itemsFromTags(tags.id3v1));
}

void addMissingItems(QList<AVMetadataItem>& items, const QList<AVMetadataItem>& more) {
    QSet<QString> present;
    for (const AVMetadataItem& item : items)
        present.insert(item.identifier);
    QList<AVMetadataItem> added;
    for (const AVMetadataItem& item : more) {
        // The two forms of a year are one fact.
        const bool given =
            present.contains(item.identifier) || (item.identifier == QLatin1String("id3/TYER") &&
                                                  present.contains(QStringLiteral("id3/TDRC")));
        if (!given)
            added.append(item);
    }
    items = added + items;
}

} // namespace clipheave::platform
