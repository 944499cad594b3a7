// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/probe/tags.h"

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/utc.h"
#include "platform/media/model/tag_mapping.h"

#include <algorithm>
#include <string_view>

namespace clipheave::platform {

namespace {

constexpr int kMostTags = 1000;
constexpr unsigned kMostTaggedStreams = 64;
constexpr int kLargestArtwork = 32 << 20;
constexpr QLatin1String kQuickTimePrefix("com.apple.quicktime.");

/// Returns the text of a tag; not every writer keeps to UTF-8.
QString tagValue(const char* bytes) {
    const QByteArrayView view(bytes);
    return view.isValidUtf8() ? QString::fromUtf8(view) : QString::fromLatin1(view);
}

void collectTags(const AVDictionary* dictionary, QList<NamedTag>& tags) {
    const AVDictionaryEntry* entry = nullptr;
    while (tags.size() < kMostTags &&
           (entry = av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr)
        tags.append({tagValue(entry->key), tagValue(entry->value)});
}

/// Adds the tags of a stream whose names no stream before has. The title of an image is its own.
void collectMissingTags(const AVStream& stream, QList<NamedTag>& tags) {
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0)
        return;
    QList<NamedTag> own;
    collectTags(stream.metadata, own);
    own.removeIf([&](const NamedTag& tag) {
        return std::any_of(tags.cbegin(), tags.cend(), [&](const NamedTag& known) {
            return known.name.compare(tag.name, Qt::CaseInsensitive) == 0;
        });
    });
    tags += own;
}

/// Returns the tags of the file. Ogg keeps them with its streams, often the audio's alone;
/// elsewhere a stream's title is its own.
QList<NamedTag> fileTags(const AVFormatContext& context) {
    QList<NamedTag> tags;
    collectTags(context.metadata, tags);
    if (std::string_view(context.iformat->name) == "ogg")
        for (unsigned i = 0; i < std::min(context.nb_streams, kMostTaggedStreams); ++i)
            collectMissingTags(*context.streams[i], tags);
    return tags;
}

void appendArtwork(const AVFormatContext& context, QList<AVMetadataItem>& items) {
    for (unsigned i = 0; i < std::min(context.nb_streams, kMostTaggedStreams); ++i) {
        const AVPacket& artwork = context.streams[i]->attached_pic;
        if (artwork.data == nullptr || artwork.size <= 0 || artwork.size > kLargestArtwork)
            continue;
        const auto* bytes = static_cast<const char*>(static_cast<const void*>(artwork.data));
        items.append(AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                          QStringLiteral("id3/APIC"),
                                          QByteArray(bytes, artwork.size)));
    }
}

} // namespace

QList<AVMetadataItem> mappedTags(const AVFormatContext& context) {
    const QList<NamedTag> tags = fileTags(context);
    QList<AVMetadataItem> items = itemsFromTags(tags);
    // Names of the QuickTime key space, which some writers carry over as they are.
    for (const NamedTag& tag : tags) {
        if (!tag.name.startsWith(kQuickTimePrefix, Qt::CaseInsensitive) || tag.value.isEmpty())
            continue;
        const QString key = kQuickTimePrefix + tag.name.mid(kQuickTimePrefix.size());
        const QString space = QStringLiteral("mdta");
        items.append(AVMetadataItem::make(space, key, space + u'/' + key, tag.value));
    }
    appendArtwork(context, items);
    return items;
}

QDateTime creationTime(const AVFormatContext& context) {
    const AVDictionaryEntry* entry = av_dict_get(context.metadata, "creation_time", nullptr, 0);
    if (entry == nullptr)
        return {};
    // libavformat writes "2019-05-04T10:11:12.000000Z"; a text without zone is taken as UTC.
    const QDateTime date = QDateTime::fromString(tagValue(entry->value), Qt::ISODateWithMs);
    const bool isZoned = !date.isValid() || date.timeSpec() != Qt::LocalTime;
    return isZoned ? date : QDateTime(date.date(), date.time(), kUtc);
}

} // namespace clipheave::platform
